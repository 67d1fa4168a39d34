#include "mp3/builtin_decoder_feed.h"

#include <cstdio>
#include <cstring>

#include "app/diagnostic_log.h"
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

// The length of the frame at the front, re-synchronising once on the next
// frame start. 0 means the accumulator held no frame start at all.
uint32_t frontFrameLength(BuiltinDecoderState& state, bool& lost) {
    lost = false;
    const std::span<const uint8_t> waiting(state.accumulator.get(), state.cvtsize);
    uint32_t length = wholeFrameLength(waiting);
    if (length >= 2) {
        return length;
    }
    const long start = mpegFindFrameStart(waiting);
    if (start < 0) {
        state.cvtsize = 0;
        return 0;
    }
    dropFront(state, static_cast<uint32_t>(start));
    length = wholeFrameLength({state.accumulator.get(), state.cvtsize});
    lost = length < 2;
    return length;
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

int mp3ConvertMyDecoder(AudioSource& source) {
    BuiltinDecoderState& state = source.mx;
    AcmStage& stage = source.acm;
    const uint32_t appended = accumulate(state, stage);

    bool lost = false;
    const uint32_t length = frontFrameLength(state, lost);
    if (length < 2) {
        if (!lost) {
            return 1;
        }
        state.cvtsize = 0;
        stage.acmhead.sourceLengthUsed = appended;
        return 0;
    }
    if (state.cvtsize < length) {
        return 1;  // the frame is not whole yet
    }
    uint32_t frameBytes = length;
    if (frameBytes > stage.sourceBufferSize) {
        logCount("★mp3ConvertMyDecoder:fsize=%ld", static_cast<long>(frameBytes));
        frameBytes = stage.sourceBufferSize;
    }
    std::memcpy(stage.sourceBuffer.get(), state.accumulator.get(), frameBytes);
    stage.acmhead.sourceLength = frameBytes;
    dropFront(state, length);

    std::size_t written = 0;
    if (state.decoder->decodeFrame({stage.sourceBuffer.get(), frameBytes},
                                   {stage.destinationBuffer.get(), stage.destinationSize},
                                   written) != 1) {
        state.cvtsize = 0;
        stage.acmhead.sourceLengthUsed = appended;
        return 0;
    }
    stage.acmhead.destinationLengthUsed = static_cast<uint32_t>(written);
    return 1;
}

}  // namespace tunebox
