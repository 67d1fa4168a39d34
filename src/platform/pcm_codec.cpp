#include "platform/pcm_codec.h"

#include <soxr.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/format_plausibility.h"
#include "platform/g711.h"

namespace tunebox {
namespace {

constexpr std::size_t kChunkFrames = 4096;
constexpr std::size_t kResamplerFailed = static_cast<std::size_t>(-1);

bool isSupportedChannelCount(uint32_t channels) {
    return channels == 1 || channels == 2;
}

bool isSupportedRate(uint32_t rate) {
    return rate >= kLowestSampleRate && rate <= kHighestSampleRate;
}

using SampleDecoder = float (*)(const uint8_t*);

float decodePcm8(const uint8_t* sample) {
    return (static_cast<float>(*sample) - 128.0f) / 128.0f;
}
float decodePcm16(const uint8_t* sample) {
    const auto value = static_cast<int16_t>(sample[0] | (sample[1] << 8));
    return static_cast<float>(value) / 32768.0f;
}
float decodeALaw(const uint8_t* sample) {
    return expandALaw(*sample) / 32768.0f;
}
float decodeMuLaw(const uint8_t* sample) {
    return expandMuLaw(*sample) / 32768.0f;
}

SampleDecoder decoderFor(const WaveFormat& format) {
    switch (format.formatTag) {
        case kFormatPcm:
            return format.bitsPerSample == 8 ? decodePcm8 : decodePcm16;
        case kFormatALaw:
            return decodeALaw;
        case kFormatMuLaw:
            return decodeMuLaw;
        default:
            return nullptr;
    }
}

int16_t toPcm16(float value) {
    return static_cast<int16_t>(std::lrint(std::clamp(value * 32768.0f, -32768.0f, 32767.0f)));
}

struct SoxrDeleter {
    void operator()(soxr* resampler) const { soxr_delete(resampler); }
};
using Resampler = std::unique_ptr<soxr, SoxrDeleter>;

class PcmStream final : public CodecStream {
  public:
    PcmStream(const WaveFormat& source, const WaveFormat& destination, Resampler resampler)
        : source_(source),
          destination_(destination),
          decode_(decoderFor(source)),
          resampler_(std::move(resampler)) {}

    uint32_t destinationSizeFor(uint32_t sourceBytes) const override {
        const double frames = static_cast<double>(sourceBytes / source_.blockAlign);
        const double ratio =
            static_cast<double>(destination_.samplesPerSec) / source_.samplesPerSec;
        // A resampler may release a little more than the ratio while it settles.
        return static_cast<uint32_t>(std::ceil(frames * ratio) + 64) * destination_.blockAlign;
    }

    uint32_t convert(CodecStreamHeader& header, uint32_t flags) override {
        const uint32_t frames = header.sourceLength / source_.blockAlign;
        header.sourceLengthUsed = frames * source_.blockAlign;
        decodeFrames(header.source, frames);
        if (!resampleInto(pending_) ||
            ((flags & kCodecConvertEnd) != 0 && !flushResampler(pending_))) {
            return kCodecError;
        }
        header.destinationLengthUsed = deliverPending(header.destination, header.destinationLength);
        return kCodecOk;
    }

    std::string driverShortName() const override {
        return source_.formatTag == kFormatPcm ? "PCM (libsoxr)" : "G.711 (A-law, mu-law)";
    }

  private:
    // Expands the source frames to floats with the destination's channel count.
    void decodeFrames(const uint8_t* bytes, uint32_t frames) {
        const uint32_t bytesPerSample = source_.blockAlign / source_.channels;
        decoded_.clear();
        for (uint32_t frame = 0; frame < frames; ++frame) {
            const uint8_t* at = bytes + static_cast<std::size_t>(frame) * source_.blockAlign;
            const float left = decode_(at);
            const float right = source_.channels == 2 ? decode_(at + bytesPerSample) : left;
            if (destination_.channels == 2) {
                decoded_.push_back(left);
                decoded_.push_back(right);
            } else {
                decoded_.push_back(source_.channels == 2 ? (left + right) * 0.5f : left);
            }
        }
    }

    bool resampleInto(std::vector<int16_t>& out) {
        if (!resampler_) {
            std::transform(decoded_.begin(), decoded_.end(), std::back_inserter(out), toPcm16);
            return true;
        }
        if (decoded_.empty()) {
            return true;
        }
        if (flushed_) {
            // Input after the end (the source was sought back): a new signal.
            soxr_clear(resampler_.get());
            flushed_ = false;
        }
        const std::size_t channels = destination_.channels;
        const std::size_t inputFrames = decoded_.size() / channels;
        std::size_t consumed = 0;
        for (;;) {
            std::size_t used = 0;
            const std::size_t produced =
                runResampler(decoded_.data() + consumed * channels, inputFrames - consumed, &used);
            if (produced == kResamplerFailed) {
                return false;
            }
            consumed += used;
            appendScratch(out, produced);
            if (consumed == inputFrames && produced < kChunkFrames) {
                return true;
            }
        }
    }

    // The resampler holds back a filter's length of output; without input
    // it releases that tail, so the converted source is as long as its data.
    bool flushResampler(std::vector<int16_t>& out) {
        if (!resampler_ || flushed_) {
            return true;
        }
        for (;;) {
            const std::size_t produced = runResampler(nullptr, 0, nullptr);
            if (produced == kResamplerFailed) {
                return false;
            }
            appendScratch(out, produced);
            if (produced < kChunkFrames) {
                flushed_ = true;
                return true;
            }
        }
    }

    // One resampler call into the scratch buffer: the frames it produced.
    std::size_t runResampler(const float* input, std::size_t frames, std::size_t* used) {
        scratch_.resize(kChunkFrames * destination_.channels);
        std::size_t produced = 0;
        if (soxr_process(resampler_.get(), input, frames, used, scratch_.data(), kChunkFrames,
                         &produced) != nullptr) {
            return kResamplerFailed;
        }
        return produced;
    }

    void appendScratch(std::vector<int16_t>& out, std::size_t frames) const {
        std::transform(scratch_.begin(), scratch_.begin() + frames * destination_.channels,
                       std::back_inserter(out), toPcm16);
    }

    uint32_t deliverPending(uint8_t* destination, uint32_t capacity) {
        const std::size_t samples = std::min<std::size_t>(
            pending_.size(), (capacity / destination_.blockAlign) * destination_.channels);
        for (std::size_t i = 0; i < samples; ++i) {
            const auto value = static_cast<uint16_t>(pending_[i]);
            destination[2 * i] = static_cast<uint8_t>(value & 0xFF);
            destination[2 * i + 1] = static_cast<uint8_t>(value >> 8);
        }
        pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(samples));
        return static_cast<uint32_t>(samples * 2);
    }

    WaveFormat source_;
    WaveFormat destination_;
    SampleDecoder decode_;
    Resampler resampler_;
    std::vector<float> decoded_;
    std::vector<float> scratch_;
    std::vector<int16_t> pending_;  // output that did not fit the last destination
    bool flushed_ = false;          // the tail has been released
};

}  // namespace

bool isPcmFamilyFormat(const WaveFormat& format) {
    const uint16_t tag = format.formatTag;
    const bool pcmFamily = tag == kFormatPcm || tag == kFormatALaw || tag == kFormatMuLaw;
    return pcmFamily && isSupportedChannelCount(format.channels) &&
           implausibleFormatReason(format).empty();
}

bool pcmSuggest(const WaveFormat& source, const WaveFormat& wanted, uint32_t flags,
                WaveFormat& suggested) {
    WaveFormat pcm{kFormatPcm, source.channels, source.samplesPerSec, 0, 0, 16, 0};
    if ((flags & kSuggestFormatTag) != 0 && wanted.formatTag != kFormatPcm) {
        return false;
    }
    if ((flags & kSuggestChannels) != 0) {
        pcm.channels = wanted.channels;
    }
    if ((flags & kSuggestSamplesPerSec) != 0) {
        pcm.samplesPerSec = wanted.samplesPerSec;
    }
    if ((flags & kSuggestBitsPerSample) != 0 && wanted.bitsPerSample != 16) {
        return false;
    }
    if (!isSupportedChannelCount(pcm.channels) || !isSupportedRate(pcm.samplesPerSec)) {
        return false;
    }
    pcm.blockAlign = static_cast<uint16_t>(pcm.channels * 2);
    pcm.avgBytesPerSec = pcm.blockAlign * pcm.samplesPerSec;
    suggested = pcm;
    return true;
}

std::unique_ptr<CodecStream> openPcmStream(const WaveFormat& source,
                                           const WaveFormat& destination) {
    Resampler resampler;
    if (source.samplesPerSec != destination.samplesPerSec) {
        const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
        soxr_error_t error = nullptr;
        resampler.reset(soxr_create(source.samplesPerSec, destination.samplesPerSec,
                                    destination.channels, &error, nullptr, &quality, nullptr));
        if (error != nullptr || !resampler) {
            return nullptr;
        }
    }
    return std::make_unique<PcmStream>(source, destination, std::move(resampler));
}

}  // namespace tunebox
