#include "mp3/builtin_decoder_feed.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "app/diagnostic_log.h"
#include "mp3/lame_tag.h"
#include "mp3/mpeg_frame_length.h"
#include "platform/heap.h"
#include "platform/mpeg_codec.h"
#include "playback/audio_source.h"

namespace tunebox {
namespace {

// The longest Layer III frame of any version: MPEG 2.5 at 160 kbit/s and
// 8 kHz, with its padding slot.
constexpr uint32_t kLongestFrameBytes = 2881;

void logCount(const char* format, long value) {
    char line[128];
    std::snprintf(line, sizeof line, format, value);
    logIfEnabled(line);
}

uint32_t wholeFrameLength(std::span<const uint8_t> bytes) {
    DecoderHeader header;
    const uint32_t length = mpegFrameLength(bytes, header);
    if (length < 2) {
        return length;
    }
    return length + header.padding * (header.layer == 3 ? 4 : 1);
}

std::span<const uint8_t> waiting(const BuiltinDecoderState& state) {
    return {state.accumulator.get(), state.cvtsize};
}

void dropFront(BuiltinDecoderState& state, uint32_t count) {
    std::memmove(state.accumulator.get(), state.accumulator.get() + count, state.cvtsize - count);
    state.cvtsize -= count;
}

// Appends the stage's block to the accumulator. Returns the bytes taken.
uint32_t accumulate(BuiltinDecoderState& state, AcmStage& stage) {
    uint32_t appended = stage.acmhead.sourceLength;
    if (appended + state.cvtsize > kDecoderAccumulatorBytes) {
        logCount("★mp3ConvertMyDecoder:readsize+pinfo->mx.cvtsize=%ld",
                 static_cast<long>(appended + state.cvtsize));
        appended = kDecoderAccumulatorBytes - state.cvtsize;
    }
    std::memcpy(state.accumulator.get() + state.cvtsize, stage.sourceBuffer.get(), appended);
    state.cvtsize += appended;
    stage.acmhead.sourceLengthUsed = appended;
    stage.acmhead.destinationLengthUsed = 0;
    stage.acmhead.sourceLength = 0;
    return appended;
}

// The whole length of the frame at the front, or 0 when the bytes there do
// not start a frame of this stream. A sync pattern inside damaged or foreign
// data rarely repeats the stream's version, rate and channels as well.
uint32_t streamFrameLength(const BuiltinDecoderState& state) {
    const uint32_t length = wholeFrameLength(waiting(state));
    MpegFrameHeader header;
    if (length < 2 || parseFrameHeader(waiting(state), header) != 1) {
        return 0;
    }
    const MpegFrameHeader& stream = state.streamHeader;
    const bool same = header.version == stream.version &&
                      header.sampleRateIndex == stream.sampleRateIndex &&
                      header.channels() == stream.channels();
    return same ? length : 0;
}

void countLost(BuiltinDecoderState& state, uint32_t frames) {
    if (frames == 0) {
        return;
    }
    state.lostFrames += frames;
    logAlways("★mp3ConvertMyDecoder:lostframes=" + std::to_string(state.lostFrames));
}

// Bytes skipped between two frames of the stream stood where frames were:
// as many frames as they would have made are lost.
void countSkippedBytes(BuiltinDecoderState& state) {
    FeedPosition& position = state.position;
    if (position.inStream && position.lastFrameLength > 0) {
        countLost(state,
                  (position.junkBytes + position.lastFrameLength / 2) / position.lastFrameLength);
    }
    position.junkBytes = 0;
}

// Drops whatever lies before the next frame of the stream. Returns that
// frame's whole length, or 0 while too few bytes are there to tell.
uint32_t syncedFrameLength(BuiltinDecoderState& state) {
    while (state.cvtsize >= kFrameHeaderBytes) {
        const uint32_t length = streamFrameLength(state);
        if (length != 0) {
            countSkippedBytes(state);
            return length;
        }
        // The last byte may begin a header whose rest is still to come.
        const long next = mpegFindFrameStart(waiting(state).subspan(1));
        const uint32_t drop = next < 0 ? state.cvtsize - 1 : static_cast<uint32_t>(next) + 1;
        dropFront(state, drop);
        state.position.junkBytes += drop;
    }
    return 0;
}

uint32_t frameSamples(const BuiltinDecoderState& state) {
    return static_cast<uint32_t>(state.streamHeader.samplesPerChannel());
}

// Decodes one frame into `out` (room for one frame's output) and returns
// the bytes kept there. A tag frame gives nothing; a frame that cannot be
// decoded, or whose main data lies in a reservoir never seen, gives silence
// so that what follows keeps its time.
uint32_t emitFrame(BuiltinDecoderState& state, std::span<const uint8_t> frame,
                   std::span<uint8_t> out) {
    LameTag tag;
    if (parseLameTag(frame, tag)) {
        if (state.position.framesTaken == 0) {
            state.trim = GaplessTrim(tag, frameSamples(state));
        }
        return 0;
    }
    ++state.position.framesTaken;
    std::size_t written = 0;
    if (state.decoder->decodeFrame(frame, out, written) != 1) {
        countLost(state, 1);
        written = 0;
    }
    const uint32_t frameBytes = state.info.sizeB;
    if (written == 0) {
        std::fill_n(out.begin(), frameBytes, uint8_t{0});  // 16-bit silence
    }
    const uint32_t sampleBytes = frameBytes / frameSamples(state);
    const KeptSamples kept = state.trim.take(frameSamples(state));
    std::memmove(out.data(), out.data() + std::size_t{kept.first} * sampleBytes,
                 std::size_t{kept.count} * sampleBytes);
    return kept.count * sampleBytes;
}

// The stream was entered elsewhere than after the last block: what waits
// belongs to another place, the reservoir and filter banks to another time.
// Only an entry at the first frame knows its position in the music again.
void enterStream(BuiltinDecoderState& state, bool atStart) {
    state.decoder->reset();
    state.trim = GaplessTrim{};
    state.cvtsize = 0;
    FeedPosition& position = state.position;
    position.inStream = false;
    position.junkBytes = 0;
    if (atStart) {
        position.framesTaken = 0;
    }
}

}  // namespace

int mpegGetDecodeInfo(BuiltinDecoderState& state, std::span<const uint8_t> firstBytes) {
    state = BuiltinDecoderState{};
    state.accumulator = heapAllocZeroed<uint8_t>(kDecoderAccumulatorBytes);
    if (!state.accumulator) {
        return 0;
    }
    DecoderHeader header;
    uint32_t bitRate = 0;
    uint32_t offset = 0;
    const uint32_t frameLength = mpegParseFirstFrame(firstBytes, header, bitRate, offset);
    DecodingSetup setup;
    const DecodingOptions options;  // full rate, 16 bits, the stream's channels
    if (mpegSetUpDecoding(header, frameLength, options.reduction, options.outputMode,
                          options.frequencyLimit, setup) != 1) {
        return 0;
    }
    // The decoding proper takes only frames with a known bit rate.
    MpegFrameHeader frame;
    if (parseFrameHeader(firstBytes.subspan(offset), frame) != 1) {
        return 0;
    }
    state.streamHeader = frame;
    state.decoder = std::make_unique<MpegAudioDecoder>();
    state.decoder->configure(options);
    const MpegOutputDescription& output = setup.description;
    state.info = {static_cast<uint32_t>(output.channels), static_cast<uint32_t>(output.sampleRate),
                  static_cast<uint32_t>(output.bitsPerSample), kLongestFrameBytes,
                  static_cast<uint32_t>(output.pcmBytesPerFrame)};
    return 1;
}

int mp3OpenMyDecoder(AudioSource& source, std::span<const uint8_t> firstBytes) {
    BuiltinDecoderState& state = source.mx;
    // Only MPEG data has frames to find: PCM bytes can look like a sync.
    const bool mpeg = isMpegFormatTag(parseWaveFormat(source.sourceFormat).formatTag);
    if (!mpeg || mpegGetDecodeInfo(state, firstBytes) != 1) {
        logIfEnabled("★mpegGetDecodeInfo失敗");
        return 0;
    }
    AcmStage& stage = source.acm;
    if (mp3GetAcmFormatMem(stage) != 1) {
        logIfEnabled("★mp3GetAcmFormatMem失敗:mp3OpenMyDecoder:");
        return 0;
    }
    std::memcpy(stage.sourceFormat.get(), source.sourceFormat.data(), kCodecMaxFormatBytes);
    const auto channels = static_cast<uint16_t>(state.info.channels);
    const auto align = static_cast<uint16_t>(channels * state.info.bitsPerSample / 8);
    const WaveFormat pcm{kFormatPcm,
                         channels,
                         state.info.sampleRate,
                         align * state.info.sampleRate,
                         align,
                         static_cast<uint16_t>(state.info.bitsPerSample),
                         0};
    storeWaveFormat(pcm, {stage.destinationFormat.get(), kCodecMaxFormatBytes});
    if (mp3GetMyDecBufferMem(stage, state.info.sizeA, state.info.sizeB) != 1 ||
        mp3PrepareAcmHeader(stage) != 1) {
        logIfEnabled("★mp3GetMyDecBufferMem失敗:mp3OpenMyDecoder");
        return 0;
    }
    return 1;
}

void mp3NoteMyDecoderBlock(BuiltinDecoderState& state, int64_t position, uint32_t bytes) {
    FeedPosition& feed = state.position;
    if (feed.firstBlock < 0) {
        feed.firstBlock = position;
    } else if (position != feed.nextBlock && state.decoder) {
        enterStream(state, position == feed.firstBlock);
    }
    feed.nextBlock = position + bytes;
}

bool mp3MyDecoderHoldsFrame(BuiltinDecoderState& state) {
    if (!state.accumulator) {
        return false;
    }
    const uint32_t length = syncedFrameLength(state);
    return length != 0 && state.cvtsize >= length;
}

// Several frames per call, and a call with no new bytes, depart from the
// converter's pace of one frame per block: a VBR stream's blocks (one
// frame of the first frame's size) carry more than one frame where the
// music is quiet, and one frame per block left them piling up in the
// accumulator until it overflowed or the file ended with them unheard.
int mp3ConvertMyDecoder(AudioSource& source) {
    BuiltinDecoderState& state = source.mx;
    AcmStage& stage = source.acm;
    const uint32_t appended = accumulate(state, stage);
    if (!state.decoder) {
        state.cvtsize = 0;
        return 0;
    }
    const std::span<uint8_t> destination(stage.destinationBuffer.get(), stage.destinationSize);
    uint32_t taken = 0;
    uint32_t written = 0;
    while (written + state.info.sizeB <= destination.size()) {
        const uint32_t length = syncedFrameLength(state);
        if (length == 0 || state.cvtsize < length) {
            break;  // the frame is not whole yet
        }
        uint32_t frameBytes = length;
        if (frameBytes > stage.sourceBufferSize) {
            logCount("★mp3ConvertMyDecoder:fsize=%ld", static_cast<long>(frameBytes));
            frameBytes = stage.sourceBufferSize;
        }
        std::memcpy(stage.sourceBuffer.get(), state.accumulator.get(), frameBytes);
        stage.acmhead.sourceLength = frameBytes;
        dropFront(state, length);
        taken += length;
        state.position.inStream = true;
        state.position.lastFrameLength = length;
        written += emitFrame(state, {stage.sourceBuffer.get(), frameBytes},
                             destination.subspan(written, state.info.sizeB));
    }
    // A call on frames that were already waiting consumed those.
    stage.acmhead.sourceLengthUsed = appended != 0 ? appended : taken;
    stage.acmhead.destinationLengthUsed = written;
    return 1;
}

}  // namespace tunebox
