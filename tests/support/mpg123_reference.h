#pragma once
// libmpg123 as the reference decoder: a whole MP3 byte stream to interleaved
// 16-bit PCM at the stream's own rate, frame by frame from the first frame
// (no gapless trimming), so its samples line up with a raw frame decode;
// `downSample` 1 or 2 asks for its half or quarter rate synthesis.

#include <mpg123.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tunebox::test {

struct Mpg123Output {
    std::vector<int16_t> samples;
    long rate = 0;
    int channels = 0;
};

inline Mpg123Output decodeWithMpg123(std::span<const uint8_t> stream, int downSample = 0) {
    Mpg123Output output;
    int error = MPG123_OK;
    std::unique_ptr<mpg123_handle, decltype(&mpg123_delete)> handle(mpg123_new(nullptr, &error),
                                                                    &mpg123_delete);
    if (!handle) {
        return output;
    }
    mpg123_handle* mh = handle.get();
    mpg123_param(mh, MPG123_REMOVE_FLAGS, MPG123_GAPLESS, 0.0);
    mpg123_param(mh, MPG123_ADD_FLAGS, MPG123_QUIET | MPG123_IGNORE_INFOFRAME, 0.0);
    mpg123_param(mh, MPG123_DOWN_SAMPLE, downSample, 0.0);
    mpg123_format_none(mh);
    const long* rates = nullptr;
    std::size_t rateCount = 0;
    mpg123_rates(&rates, &rateCount);
    for (std::size_t i = 0; i < rateCount; ++i) {
        mpg123_format(mh, rates[i], MPG123_MONO | MPG123_STEREO, MPG123_ENC_SIGNED_16);
    }
    if (mpg123_open_feed(mh) != MPG123_OK) {
        return output;
    }
    mpg123_feed(mh, stream.data(), stream.size());
    std::vector<unsigned char> block(1 << 16);
    for (;;) {
        std::size_t done = 0;
        const int result = mpg123_read(mh, block.data(), block.size(), &done);
        const auto* samples = reinterpret_cast<const int16_t*>(block.data());
        output.samples.insert(output.samples.end(), samples, samples + done / 2);
        if (result == MPG123_NEW_FORMAT) {
            int encoding = 0;
            mpg123_getformat(mh, &output.rate, &output.channels, &encoding);
        } else if (result != MPG123_OK) {
            break;
        }
    }
    return output;
}

// libmpg123 reading a file by itself with its default settings (gapless
// trimming included): what a user's own player would give.
inline std::vector<int16_t> decodeFileWithMpg123(const std::string& path) {
    std::vector<int16_t> samples;
    int error = MPG123_OK;
    std::unique_ptr<mpg123_handle, decltype(&mpg123_delete)> handle(mpg123_new(nullptr, &error),
                                                                    &mpg123_delete);
    mpg123_handle* mh = handle.get();
    if (!mh) {
        return samples;
    }
    mpg123_param(mh, MPG123_ADD_FLAGS, MPG123_QUIET, 0.0);
    if (mpg123_open(mh, path.c_str()) != MPG123_OK) {
        return samples;
    }
    std::vector<unsigned char> block(1 << 16);
    for (;;) {
        std::size_t done = 0;
        const int result = mpg123_read(mh, block.data(), block.size(), &done);
        const auto* data = reinterpret_cast<const int16_t*>(block.data());
        samples.insert(samples.end(), data, data + done / 2);
        if (result != MPG123_OK && result != MPG123_NEW_FORMAT) {
            break;
        }
    }
    mpg123_close(mh);
    return samples;
}

}  // namespace tunebox::test
