#include "platform/codec_manager.h"

#include "platform/format_plausibility.h"
#include "platform/mpeg_codec.h"
#include "platform/pcm_codec.h"

namespace tunebox {
namespace {

bool mpegSuggest(const WaveFormat& source, const WaveFormat& wanted, uint32_t flags,
                 WaveFormat& suggested) {
    const WaveFormat decoded = mpegDecodedFormat(source);
    const bool possible =
        ((flags & kSuggestFormatTag) == 0 || wanted.formatTag == kFormatPcm) &&
        ((flags & kSuggestChannels) == 0 || wanted.channels == decoded.channels) &&
        ((flags & kSuggestSamplesPerSec) == 0 || wanted.samplesPerSec == decoded.samplesPerSec) &&
        ((flags & kSuggestBitsPerSample) == 0 || wanted.bitsPerSample == 16);
    if (possible) {
        suggested = decoded;
    }
    return possible;
}

}  // namespace

uint32_t codecFormatSuggest(std::span<const uint8_t> sourceFormat, WaveFormat& destination,
                            uint32_t flags) {
    const WaveFormat source = parseWaveFormat(sourceFormat);
    WaveFormat suggested;
    bool possible = false;
    if (isMpegFormatTag(source.formatTag)) {
        possible = implausibleFormatReason(source).empty() &&
                   mpegSuggest(source, destination, flags, suggested);
    } else if (isPcmFamilyFormat(source)) {
        possible = pcmSuggest(source, destination, flags, suggested);
    }
    if (!possible) {
        return kCodecNotPossible;
    }
    destination = suggested;
    return kCodecOk;
}

uint32_t codecStreamOpen(std::unique_ptr<CodecStream>& stream,
                         std::span<const uint8_t> sourceFormat, const WaveFormat& destination) {
    stream.reset();
    WaveFormat expected = destination;
    const uint32_t allFields =
        kSuggestFormatTag | kSuggestChannels | kSuggestSamplesPerSec | kSuggestBitsPerSample;
    if (codecFormatSuggest(sourceFormat, expected, allFields) != kCodecOk ||
        !sameFormat(expected, destination)) {
        return kCodecNotPossible;
    }
    const WaveFormat source = parseWaveFormat(sourceFormat);
    stream = isMpegFormatTag(source.formatTag) ? openMpegStream(source)
                                               : openPcmStream(source, destination);
    return stream ? kCodecOk : kCodecError;
}

}  // namespace tunebox
