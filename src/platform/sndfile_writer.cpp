#include "platform/sndfile_writer.h"

#include <sndfile.h>

#include <vector>

#include "core/wave_format.h"
#include "platform/pcm_codec.h"

namespace tunebox {
namespace {

constexpr uint32_t kOpusSampleRate = 48000;

struct SndfileCloser {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SndfileHandle = std::unique_ptr<SNDFILE, SndfileCloser>;

int sndfileFormat(ExportFormat format) {
    switch (format) {
        case ExportFormat::kOgg:
            return SF_FORMAT_OGG | SF_FORMAT_VORBIS;
        case ExportFormat::kOpus:
            return SF_FORMAT_OGG | SF_FORMAT_OPUS;
        default:
            return SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
    }
}

// FLAC's quality is how hard it compresses; Vorbis and Opus take theirs as
// their variable bit rate's quality. Both scales run 0..1 in libsndfile.
void applyQuality(SNDFILE* file, const EncoderSettings& settings) {
    double quality = settings.quality;
    const int command = settings.format == ExportFormat::kFlac ? SFC_SET_COMPRESSION_LEVEL
                                                               : SFC_SET_VBR_ENCODING_QUALITY;
    sf_command(file, command, &quality, sizeof quality);
}

void applyTags(SNDFILE* file, const ExportTags& tags) {
    sf_set_string(file, SF_STR_TITLE, tags.title.c_str());
    if (!tags.artist.empty()) {
        sf_set_string(file, SF_STR_ARTIST, tags.artist.c_str());
    }
    sf_set_string(file, SF_STR_DATE, tags.date.c_str());
}

class SndfileWriter final : public AudioEncoder {
  public:
    SndfileWriter(SndfileHandle file, std::unique_ptr<CodecStream> resampler)
        : file_(std::move(file)), resampler_(std::move(resampler)) {}

    std::string write(std::span<const int16_t> samples) override {
        if (!resampler_) {
            return writeSamples(samples);
        }
        const auto* bytes = reinterpret_cast<const uint8_t*>(samples.data());
        return resample(bytes, static_cast<uint32_t>(samples.size_bytes()), 0);
    }

    std::string finish() override {
        if (resampler_) {
            if (std::string problem = resample(nullptr, 0, kCodecConvertEnd); !problem.empty()) {
                return problem;
            }
        }
        const int status = sf_close(file_.release());
        return status == SF_ERR_NO_ERROR ? std::string() : sf_error_number(status);
    }

  private:
    std::string writeSamples(std::span<const int16_t> samples) {
        const auto frames = static_cast<sf_count_t>(samples.size() / 2);
        if (frames == 0) {
            return {};
        }
        if (sf_writef_short(file_.get(), samples.data(), frames) != frames) {
            return sf_strerror(file_.get());
        }
        return {};
    }

    // Runs the resampler until it has taken all of `bytes` (or, at the end,
    // given out its tail) and writes what it makes.
    std::string resample(const uint8_t* bytes, uint32_t count, uint32_t flags) {
        uint32_t offered = 0;
        for (;;) {
            resampled_.resize(resampler_->destinationSizeFor(count - offered) / 2 + 4096);
            CodecStreamHeader header{bytes == nullptr ? nullptr : bytes + offered,
                                     count - offered,
                                     0,
                                     reinterpret_cast<uint8_t*>(resampled_.data()),
                                     static_cast<uint32_t>(resampled_.size() * 2),
                                     0};
            if (resampler_->convert(header, flags) != kCodecOk) {
                return "the resampler failed";
            }
            offered += header.sourceLengthUsed;
            const std::span<const int16_t> made(resampled_.data(),
                                                header.destinationLengthUsed / 2);
            if (std::string problem = writeSamples(made); !problem.empty()) {
                return problem;
            }
            if (offered == count && header.destinationLengthUsed == 0) {
                return {};
            }
        }
    }

    SndfileHandle file_;
    std::unique_ptr<CodecStream> resampler_;  // only for Opus
    std::vector<int16_t> resampled_;
};

}  // namespace

std::unique_ptr<AudioEncoder> openSndfileWriter(const std::string& path,
                                                const EncoderSettings& settings,
                                                std::string& error) {
    const bool opus = settings.format == ExportFormat::kOpus;
    SF_INFO info{};
    info.samplerate = static_cast<int>(opus ? kOpusSampleRate : kNativeSampleRate);
    info.channels = 2;
    info.format = sndfileFormat(settings.format);
    std::unique_ptr<CodecStream> resampler;
    if (opus) {
        WaveFormat rate48k = kNativeFormat;
        rate48k.samplesPerSec = kOpusSampleRate;
        rate48k.avgBytesPerSec = kOpusSampleRate * kNativeFrameBytes;
        resampler = openPcmStream(kNativeFormat, rate48k);
        if (!resampler) {
            error = "no resampler to 48000 Hz for Opus";
            return nullptr;
        }
    }
    SndfileHandle file(sf_open(path.c_str(), SFM_WRITE, &info));
    if (!file) {
        error = sf_strerror(nullptr);
        return nullptr;
    }
    applyQuality(file.get(), settings);
    applyTags(file.get(), settings.tags);
    return std::make_unique<SndfileWriter>(std::move(file), std::move(resampler));
}

}  // namespace tunebox
