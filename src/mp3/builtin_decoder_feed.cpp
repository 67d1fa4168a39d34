#include "mp3/builtin_decoder_feed.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "core/diagnostic_log.h"
#include "core/heap.h"
#include "mp3/conversion_state.h"
#include "mp3/decoder/mpeg_frame_length.h"
#include "mp3/decoder/xing_tag.h"
#include "platform/mpeg_codec.h"

namespace tunebox {
namespace {

// The longest frame the decoder takes: Layer III in MPEG 2.5 at 160 kbit/s
// and 8 kHz, with its padding slot (Layer II reaches 1,729 bytes, Layer I
// 1,540).
constexpr uint32_t kLongestFrameBytes = 2881;

void logCount(const char* format, long value) {
    char line[128];
    std::snprintf(line, sizeof line, format, value);
    logIfEnabled(line);
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

// The whole length of the frame at `offset`, or 0 when the bytes there do
// not start a frame of this stream. A sync pattern inside damaged or foreign
// data rarely repeats the stream's version, rate and channels as well.
uint32_t streamFrameLength(const BuiltinDecoderState& state, uint32_t offset) {
    MpegHeader header;
    const uint32_t length = mpegWholeFrameLength(waiting(state).subspan(offset), header);
    // The decoding proper takes only frames with a known bit rate.
    const bool same = mpegDecodableLayer(header) && header.bitRate != 0 &&
                      mpegSameStream(state.streamHeader, header);
    return length >= 2 && same ? length : 0;
}

// The next frame of the stream in the accumulator: the bytes before it and
// its whole length (0 while no frame can be told yet; the bytes before
// that are not a frame whatever follows).
struct NextFrame {
    uint32_t offset = 0;
    uint32_t length = 0;
};

NextFrame findStreamFrame(const BuiltinDecoderState& state) {
    uint32_t offset = 0;
    while (offset + kFrameHeaderBytes <= state.cvtsize) {
        const uint32_t length = streamFrameLength(state, offset);
        if (length != 0) {
            return {offset, length};
        }
        // The last byte may begin a header whose rest is still to come.
        const long next = mpegFindFrameStart(waiting(state).subspan(offset + 1));
        offset = next < 0 ? state.cvtsize - 1 : offset + 1 + static_cast<uint32_t>(next);
    }
    return {offset, 0};
}

void countLost(BuiltinDecoderState& state, uint32_t frames) {
    if (frames == 0) {
        return;
    }
    state.lostFrames += frames;
    logAlways("★mp3ConvertMyDecoder:lostframes=" + std::to_string(state.lostFrames));
}

// Bytes skipped between two frames of the stream stood where frames were:
// as many frames as they would have made are lost, and owe their silence.
void countSkippedBytes(BuiltinDecoderState& state) {
    FeedPosition& position = state.position;
    if (position.inStream && position.lastFrameLength > 0) {
        const uint32_t frames =
            (position.junkBytes + position.lastFrameLength / 2) / position.lastFrameLength;
        countLost(state, frames);
        position.silentFramesOwed += frames;
        if (frames > 0) {
            // The lost frames' main data is gone: a frame reaching back into
            // it gives silence rather than noise.
            state.decoder->forgetReservoir();
            position.reservoirLost = true;
        }
    }
    position.junkBytes = 0;
}

// Drops whatever lies before the next frame of the stream. Returns that
// frame's whole length, or 0 while too few bytes are there to tell.
uint32_t syncedFrameLength(BuiltinDecoderState& state) {
    const NextFrame next = findStreamFrame(state);
    dropFront(state, next.offset);
    state.position.junkBytes += next.offset;
    if (next.length != 0) {
        countSkippedBytes(state);
    }
    return next.length;
}

uint32_t frameSamples(const BuiltinDecoderState& state) {
    return state.streamHeader.samplesPerFrame;
}

// Keeps of the frame's output at the start of `out` what the gapless trim
// keeps, at the start of `out`. Returns its bytes.
uint32_t keepTrimmed(BuiltinDecoderState& state, std::span<uint8_t> out) {
    const uint32_t sampleBytes = state.info.sizeB / frameSamples(state);
    const KeptSamples kept = state.trim.take(frameSamples(state));
    std::memmove(out.data(), out.data() + std::size_t{kept.first} * sampleBytes,
                 std::size_t{kept.count} * sampleBytes);
    return kept.count * sampleBytes;
}

uint32_t emitSilence(BuiltinDecoderState& state, std::span<uint8_t> out) {
    std::fill_n(out.begin(), state.info.sizeB, uint8_t{0});  // 16-bit silence
    return keepTrimmed(state, out);
}

// Decodes one frame into `out` (room for one frame's output) and returns
// the bytes kept there. A tag frame gives nothing; a frame that cannot be
// decoded, or whose main data lies in a reservoir never seen, gives silence
// so that what follows keeps its time.
uint32_t emitFrame(BuiltinDecoderState& state, std::span<const uint8_t> frame,
                   std::span<uint8_t> out) {
    XingTag tag;
    if (readXingTag(frame, tag)) {
        if (state.position.framesTaken == 0) {
            state.trim = GaplessTrim(tag, frameSamples(state));
        }
        return 0;
    }
    ++state.position.framesTaken;
    std::size_t written = 0;
    if (state.decoder->decodeFrame(frame, out, written) != 1) {
        countLost(state, 1);
        return emitSilence(state, out);
    }
    if (written != 0) {
        state.position.reservoirLost = false;
        return keepTrimmed(state, out);
    }
    // After a seek the first frames may reach back before it: that loses
    // nothing of the music asked for. After lost frames it does.
    if (state.position.reservoirLost) {
        countLost(state, 1);
    }
    return emitSilence(state, out);
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
    position.silentFramesOwed = 0;
    position.reservoirLost = false;
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
    MpegHeader header;
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
    if (header.bitRate == 0) {
        return 0;
    }
    state.streamHeader = header;
    state.decoder = std::make_unique<MpegAudioDecoder>();
    state.decoder->configure(options);
    const MpegOutputDescription& output = setup.description;
    state.info = {static_cast<uint32_t>(output.channels), static_cast<uint32_t>(output.sampleRate),
                  static_cast<uint32_t>(output.bitsPerSample), kLongestFrameBytes,
                  static_cast<uint32_t>(output.pcmBytesPerFrame)};
    return 1;
}

int mp3OpenMyDecoder(ConversionState& source, std::span<const uint8_t> firstBytes) {
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

bool mp3MyDecoderHoldsFrame(const BuiltinDecoderState& state) {
    if (!state.accumulator || !state.decoder) {
        return false;
    }
    const NextFrame next = findStreamFrame(state);
    return state.position.silentFramesOwed > 0 ||
           (next.length != 0 && state.cvtsize >= next.offset + next.length);
}

// Several frames per call, and a call with no new bytes, depart from the
// converter's pace of one frame per block: a VBR stream's blocks (one
// frame of the first frame's size) carry more than one frame where the
// music is quiet, and one frame per block left them piling up in the
// accumulator until it overflowed or the file ended with them unheard.
int mp3ConvertMyDecoder(ConversionState& source) {
    BuiltinDecoderState& state = source.mx;
    AcmStage& stage = source.acm;
    const uint32_t appended = accumulate(state, stage);
    if (!state.decoder) {
        state.cvtsize = 0;
        return 0;
    }
    const std::span<uint8_t> destination(stage.destinationBuffer.get(), stage.destinationSize);
    const uint32_t waitingBefore = state.cvtsize;
    uint32_t written = 0;
    while (written + state.info.sizeB <= destination.size()) {
        const std::span<uint8_t> out = destination.subspan(written, state.info.sizeB);
        const uint32_t length = syncedFrameLength(state);
        if (state.position.silentFramesOwed > 0) {
            --state.position.silentFramesOwed;
            written += emitSilence(state, out);
            continue;
        }
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
        state.position.inStream = true;
        state.position.lastFrameLength = length;
        written += emitFrame(state, {stage.sourceBuffer.get(), frameBytes}, out);
    }
    // A call on what already waited reports what it took from the
    // accumulator, at least a byte when it gave output (silence owed for
    // bytes an earlier call dropped): the read places only output that
    // used input.
    const uint32_t consumed = waitingBefore - state.cvtsize;
    stage.acmhead.sourceLengthUsed =
        appended != 0 ? appended : std::max(consumed, written != 0 ? 1u : 0u);
    stage.acmhead.destinationLengthUsed = written;
    return 1;
}

}  // namespace tunebox
