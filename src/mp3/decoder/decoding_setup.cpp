#include "mp3/decoder/decoding_setup.h"

#include <algorithm>

namespace tunebox {
namespace {

constexpr int kLowestFrequencyLimit = 1000;

// The frequency limit names the last subband worth decoding: the one whose
// band reaches the limit, (f / 2 + limit * 64) / f rounded down, with
// f / 64 the width of a subband. It is bounded by the last subband the
// synthesis has, one below its count, and by the count itself where the
// synthesis is narrow. Read as a count instead it would drop the top
// subband at full rate, and with it what a stream codes above 21.3 kHz.
int decodedSubbands(int sampleRate, int reduction, int frequencyLimit) {
    const int synthesised = kSubbands >> reduction;
    const int highest = synthesised > 8 ? synthesised - 1 : synthesised;
    const int lastWanted = (sampleRate / 2 + frequencyLimit * 64) / sampleRate;
    return std::min(std::min(lastWanted, highest) + 1, synthesised);
}

DecodingSetup setUp(const MpegHeader& header, int reduction, int outputMode, int frequencyLimit) {
    const auto sampleRate = static_cast<int>(header.sampleRate);
    DecodingSetup setup;
    setup.reduction = std::clamp(reduction, 0, kMaxReduction);
    setup.channelHandling = header.channels() == 1 ? 0 : (outputMode & 3) + 1;
    setup.sampleMultiplier = sampleMultiplier(setup.channelHandling);
    const bool eightBit = (outputMode & kOutputMode8Bit) != 0;
    setup.decodedSubbands = decodedSubbands(sampleRate, setup.reduction,
                                            std::max(frequencyLimit, kLowestFrequencyLimit));
    setup.output = frameOutputRoutine(eightBit, setup.reduction, setup.channelHandling);

    MpegOutputDescription& out = setup.description;
    out.channels = synthesisedChannels(setup.channelHandling) * setup.sampleMultiplier;
    out.sampleRate = sampleRate >> setup.reduction;
    out.bitsPerSample = eightBit ? 8 : 16;
    out.samplesPerFrame = std::size_t{header.samplesPerFrame} >> setup.reduction;
    out.pcmBytesPerFrame = out.samplesPerFrame * static_cast<std::size_t>(out.channels) *
                           static_cast<std::size_t>(out.bitsPerSample / 8);
    return setup;
}

}  // namespace

int mpegSetUpDecoding(const MpegHeader& header, uint32_t frameLength, int reduction, int outputMode,
                      int frequencyLimit, DecodingSetup& setup) {
    if (frameLength < 2 || !mpegDecodableLayer(header) || header.sampleRate == 0) {
        return 0;
    }
    setup = setUp(header, reduction, outputMode, frequencyLimit);
    return 1;
}

DecodingSetup setUpDecoding(const MpegHeader& header, const DecodingOptions& options) {
    return setUp(header, options.reduction, options.outputMode, options.frequencyLimit);
}

MpegOutputDescription describeOutput(const MpegHeader& header) {
    return setUpDecoding(header, DecodingOptions{}).description;
}

}  // namespace tunebox
