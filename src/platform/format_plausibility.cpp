#include "platform/format_plausibility.h"

#include <initializer_list>

namespace tunebox {
namespace {

std::string rateReason(const WaveFormat& format) {
    if (format.samplesPerSec >= kLowestSampleRate && format.samplesPerSec <= kHighestSampleRate) {
        return {};
    }
    return "sample rate " + std::to_string(format.samplesPerSec) + " Hz is outside " +
           std::to_string(kLowestSampleRate) + "-" + std::to_string(kHighestSampleRate) + " Hz";
}

std::string channelReason(const WaveFormat& format) {
    if (format.channels >= 1 && format.channels <= kMostChannels) {
        return {};
    }
    return "channel count " + std::to_string(format.channels) + " is outside 1-" +
           std::to_string(kMostChannels);
}

std::string widthReason(const WaveFormat& format) {
    const uint16_t bits = format.bitsPerSample;
    if (format.formatTag == kFormatPcm) {
        return bits == 8 || bits == 16
                   ? std::string{}
                   : "bits per sample " + std::to_string(bits) + " is not supported (PCM: 8 or 16)";
    }
    return bits == 8
               ? std::string{}
               : "bits per sample " + std::to_string(bits) + " is not supported (A-law, mu-law: 8)";
}

// The block and the byte rate must follow from the channels, the width and
// the rate; the rate is checked first, so the product stays far below 2^32.
std::string geometryReason(const WaveFormat& format) {
    const uint32_t blockAlign = format.channels * (format.bitsPerSample / 8u);
    if (format.blockAlign != blockAlign) {
        return "block alignment " + std::to_string(format.blockAlign) + " does not match " +
               std::to_string(format.channels) + " channels of " +
               std::to_string(format.bitsPerSample) + " bits (" + std::to_string(blockAlign) + ")";
    }
    const uint32_t byteRate = blockAlign * format.samplesPerSec;
    if (format.avgBytesPerSec != byteRate) {
        return "average bytes per second " + std::to_string(format.avgBytesPerSec) +
               " does not match " + std::to_string(format.samplesPerSec) + " frames of " +
               std::to_string(blockAlign) + " bytes (" + std::to_string(byteRate) + ")";
    }
    if (uint64_t{byteRate} * kMostGrowth < kNativeBytesPerSecond) {
        return "average bytes per second " + std::to_string(byteRate) +
               " is too few: native audio would be more than " + std::to_string(kMostGrowth) +
               " times as large";
    }
    return {};
}

// A compressed stream's lengths are worked out from its byte rate.
std::string byteRateReason(const WaveFormat& format) {
    return format.avgBytesPerSec != 0 ? std::string{} : "average bytes per second 0";
}

bool isSampleFormatTag(uint16_t tag) {
    return tag == kFormatPcm || tag == kFormatALaw || tag == kFormatMuLaw;
}

using Check = std::string (*)(const WaveFormat&);

std::string firstReason(const WaveFormat& format, std::initializer_list<Check> checks) {
    for (const Check check : checks) {
        std::string reason = check(format);
        if (!reason.empty()) {
            return reason;
        }
    }
    return {};
}

}  // namespace

std::string implausibleFormatReason(const WaveFormat& format) {
    if (isSampleFormatTag(format.formatTag)) {
        return firstReason(format, {rateReason, channelReason, widthReason, geometryReason});
    }
    return firstReason(format, {rateReason, channelReason, byteRateReason});
}

}  // namespace tunebox
