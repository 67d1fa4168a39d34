#include "mp3/decoding_setup.h"

#include <algorithm>
#include <array>

namespace tunebox {
namespace {

constexpr int kLowestFrequencyLimit = 1000;
constexpr int kLayer3Field = 1;
constexpr int kSingleChannelMode = 3;

struct StreamShape {
    int sampleRate = 0;  // Hz, the true rate (MPEG 2.5 included)
    int channels = 0;
    int samplesPerChannel = 0;
};

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

DecodingSetup setUp(const StreamShape& shape, int reduction, int outputMode, int frequencyLimit) {
    DecodingSetup setup;
    setup.reduction = std::clamp(reduction, 0, kMaxReduction);
    setup.channelHandling = shape.channels == 1 ? 0 : (outputMode & 3) + 1;
    setup.sampleMultiplier = sampleMultiplier(setup.channelHandling);
    const bool eightBit = (outputMode & kOutputMode8Bit) != 0;
    setup.decodedSubbands = decodedSubbands(shape.sampleRate, setup.reduction,
                                            std::max(frequencyLimit, kLowestFrequencyLimit));
    setup.output = frameOutputRoutine(eightBit, setup.reduction, setup.channelHandling);

    MpegOutputDescription& out = setup.description;
    out.channels = synthesisedChannels(setup.channelHandling) * setup.sampleMultiplier;
    out.sampleRate = shape.sampleRate >> setup.reduction;
    out.bitsPerSample = eightBit ? 8 : 16;
    out.samplesPerFrame = static_cast<std::size_t>(shape.samplesPerChannel >> setup.reduction);
    out.pcmBytesPerFrame = out.samplesPerFrame * static_cast<std::size_t>(out.channels) *
                           static_cast<std::size_t>(out.bitsPerSample / 8);
    return setup;
}

}  // namespace

int mpegSetUpDecoding(const DecoderHeader& header, uint32_t frameLength, int reduction,
                      int outputMode, int frequencyLimit, DecodingSetup& setup) {
    constexpr std::array<std::array<int, 3>, 2> kRates{
        {{22050, 24000, 16000}, {44100, 48000, 32000}}};
    if (frameLength < 2 || header.layer != kLayer3Field || header.samplingIndex > 2 ||
        header.id > 1) {
        return 0;
    }
    int rate = kRates[header.id][header.samplingIndex];
    if (header.versionKind == 2) {
        rate /= 2;  // MPEG 2.5 shares MPEG-2's table at twice its rates
    }
    const StreamShape shape{rate, header.mode == kSingleChannelMode ? 1 : 2,
                            header.id == 1 ? 1152 : 576};
    setup = setUp(shape, reduction, outputMode, frequencyLimit);
    return 1;
}

DecodingSetup setUpDecoding(const MpegFrameHeader& header, const DecodingOptions& options) {
    return setUp({header.sampleRate(), header.channels(), header.samplesPerChannel()},
                 options.reduction, options.outputMode, options.frequencyLimit);
}

MpegOutputDescription describeOutput(const MpegFrameHeader& header) {
    return setUpDecoding(header, DecodingOptions{}).description;
}

}  // namespace tunebox
