#pragma once
// An accompaniment source opened as the player opens it, and read whole in
// requests of a given size.

#include <cstdint>
#include <string>
#include <vector>

#include "playback/source_reader.h"
#include "playback/wav_reader.h"
#include "support/test_files.h"

namespace tunebox::test {

struct Opened {
    RiffHandle file;
    AudioSource source;
    uint32_t length = 0;
};

inline bool open(const std::string& path, Opened& opened, uint32_t forceOwnDecoder = 0) {
    return wavOpenSource(path, opened.file, opened.length, opened.source, forceOwnDecoder) == 1;
}

// Reads the whole source in requests of `request` bytes.
inline std::vector<uint8_t> readAll(Opened& opened, uint32_t request) {
    std::vector<uint8_t> all;
    std::vector<uint8_t> block(request);
    for (int guard = 0; guard < 10000000; ++guard) {
        uint32_t count = 0;
        uint32_t end = 0;
        const int result =
            sourceRead(*opened.file, block.data(), request, count, end, opened.source);
        all.insert(all.end(), block.begin(), block.begin() + count);
        if (result == 0 || end == 1) {
            break;
        }
    }
    return all;
}

// The built-in decoder's own output (the stream's rate and channels), read
// whole; empty when the file does not open on the built-in decoder.
inline std::vector<int16_t> decodeWithBuiltinFeed(const std::string& path, uint32_t request,
                                                  uint32_t* lostFrames = nullptr) {
    Opened opened;
    if (!open(path, opened, 1) || opened.source.ownDecoderFlag != 1) {
        return {};
    }
    opened.source.conversionStages = 1;
    auto samples = toSamples(readAll(opened, request));
    if (lostFrames != nullptr) {
        *lostFrames = opened.source.mx.lostFrames;
    }
    return samples;
}

}  // namespace tunebox::test
