#pragma once
// Opening an accompaniment as the player does and reading all of it as
// native PCM, in requests of a chosen size.

#include <cstdint>
#include <string>
#include <vector>

#include "playback/source_reader.h"
#include "playback/wav_reader.h"

namespace tunebox::test {

struct OpenedSource {
    RiffHandle file;
    AudioSource source;
    uint32_t length = 0;
};

inline bool openSource(const std::string& path, OpenedSource& opened,
                       uint32_t forceOwnDecoder = 0) {
    return wavOpenSource(path, opened.file, opened.length, opened.source, forceOwnDecoder) == 1;
}

// Reads until the source reports its end (or a read fails).
inline std::vector<uint8_t> readWholeSource(OpenedSource& opened, uint32_t request) {
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

}  // namespace tunebox::test
