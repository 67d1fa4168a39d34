#pragma once
// An accompaniment source opened as the player opens it, and read whole in
// requests of a given size.

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "playback/source_opener.h"
#include "support/test_files.h"

namespace tunebox::test {

struct Opened {
    std::unique_ptr<AudioSource> source;  // null when no opener took the file
    std::string refusal;
    uint32_t length = 0;

    SourceDescription description() const { return source->describe(); }
};

inline bool open(const std::string& path, Opened& opened, uint32_t builtinFirst = 0) {
    SourceOpening opening = wavOpenSource(path, SourceOptions{builtinFirst == 1});
    opened.source = std::move(opening.source);
    opened.refusal = std::move(opening.refusal);
    opened.length = opened.source ? opened.source->length() : 0;
    return opened.source != nullptr;
}

// Reads the whole source in requests of `request` bytes.
inline std::vector<uint8_t> readAll(Opened& opened, uint32_t request) {
    std::vector<uint8_t> all;
    std::vector<uint8_t> block(request);
    for (int guard = 0; guard < 10000000; ++guard) {
        const SourceBlock read = opened.source->read(block.data(), request);
        all.insert(all.end(), block.begin(), block.begin() + read.count);
        if (read.failed || read.ended) {
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
    if (!open(path, opened, 1) || !opened.description().builtinDecoder) {
        return {};
    }
    static_cast<void>(opened.source->keepDecoderOutput());
    auto samples = toSamples(readAll(opened, request));
    if (lostFrames != nullptr) {
        *lostFrames = opened.description().lostFrames;
    }
    return samples;
}

}  // namespace tunebox::test
