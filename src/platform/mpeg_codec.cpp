#include "platform/mpeg_codec.h"

#include <mpg123.h>

#include <algorithm>

namespace tunebox {
namespace {

struct HandleDeleter {
    void operator()(mpg123_handle* handle) const {
        mpg123_close(handle);
        mpg123_delete(handle);
    }
};
using Mpg123Handle = std::unique_ptr<mpg123_handle, HandleDeleter>;

class MpegStream final : public CodecStream {
  public:
    MpegStream(Mpg123Handle handle, const WaveFormat& decoded)
        : handle_(std::move(handle)), decoded_(decoded) {}

    uint32_t destinationSizeFor(uint32_t sourceBytes) const override {
        // The smallest frame at this rate carries a whole frame of samples,
        // so the most output comes from a block packed with the smallest frames.
        const bool mpeg1 = decoded_.samplesPerSec >= 32000;
        const uint32_t samplesPerFrame = mpeg1 ? 1152 : 576;
        const uint32_t smallestFrame =
            mpeg1 ? 144 * 32000 / decoded_.samplesPerSec : 72 * 8000 / decoded_.samplesPerSec;
        const uint32_t frames = sourceBytes / std::max(smallestFrame, 1u) + 2;
        return frames * samplesPerFrame * decoded_.blockAlign;
    }

    // The decoder keeps no tail: at the end it only hands out what did not fit.
    uint32_t convert(CodecStreamHeader& header, uint32_t /*flags*/) override {
        header.sourceLengthUsed = 0;
        header.destinationLengthUsed = 0;
        if (header.sourceLength > 0 &&
            mpg123_feed(handle_.get(), header.source, header.sourceLength) != MPG123_OK) {
            return kCodecError;
        }
        header.sourceLengthUsed = header.sourceLength;
        while (header.destinationLengthUsed < header.destinationLength) {
            std::size_t done = 0;
            const int result =
                mpg123_read(handle_.get(), header.destination + header.destinationLengthUsed,
                            header.destinationLength - header.destinationLengthUsed, &done);
            header.destinationLengthUsed += static_cast<uint32_t>(done);
            if (result == MPG123_NEED_MORE || result == MPG123_DONE) {
                break;
            }
            if (result != MPG123_OK && result != MPG123_NEW_FORMAT) {
                return kCodecError;
            }
        }
        return kCodecOk;
    }

    std::string driverShortName() const override { return "MPEG Audio (libmpg123)"; }

  private:
    Mpg123Handle handle_;
    WaveFormat decoded_;
};

}  // namespace

bool isMpegFormatTag(uint16_t formatTag) {
    return formatTag == kFormatMpegLayer3 || formatTag == kFormatMpegLayers12;
}

WaveFormat mpegDecodedFormat(const WaveFormat& source) {
    WaveFormat pcm{kFormatPcm,
                   source.channels == 1 ? uint16_t{1} : uint16_t{2},
                   source.samplesPerSec,
                   0,
                   0,
                   16,
                   0};
    pcm.blockAlign = static_cast<uint16_t>(pcm.channels * 2);
    pcm.avgBytesPerSec = pcm.blockAlign * pcm.samplesPerSec;
    return pcm;
}

std::unique_ptr<CodecStream> openMpegStream(const WaveFormat& source) {
    const WaveFormat decoded = mpegDecodedFormat(source);
    int error = MPG123_OK;
    Mpg123Handle handle(mpg123_new(nullptr, &error));
    if (!handle) {
        return nullptr;
    }
    const long channels = decoded.channels == 1 ? MPG123_MONO : MPG123_STEREO;
    const bool configured =
        mpg123_param(handle.get(), MPG123_ADD_FLAGS, MPG123_QUIET, 0) == MPG123_OK &&
        mpg123_format_none(handle.get()) == MPG123_OK &&
        mpg123_format(handle.get(), static_cast<long>(decoded.samplesPerSec), channels,
                      MPG123_ENC_SIGNED_16) == MPG123_OK &&
        mpg123_open_feed(handle.get()) == MPG123_OK;
    if (!configured) {
        return nullptr;
    }
    return std::make_unique<MpegStream>(std::move(handle), decoded);
}

}  // namespace tunebox
