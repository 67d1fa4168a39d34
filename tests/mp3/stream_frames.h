#pragma once
// The frames of an MPEG stream, walked header to header from its first byte.

#include <cstdint>
#include <span>
#include <vector>

#include "mp3/decoder/mpeg_header.h"

namespace tunebox::test {

struct StreamFrame {
    std::size_t offset;
    MpegHeader header;
};

// The walk ends at the first place that holds no whole frame.
inline std::vector<StreamFrame> streamFrames(std::span<const uint8_t> stream) {
    std::vector<StreamFrame> frames;
    MpegHeader header;
    for (std::size_t at = 0; at < stream.size() && mpegParseHeader(stream.subspan(at), header) &&
                             at + header.frameBytes() <= stream.size();
         at += header.frameBytes()) {
        frames.push_back({at, header});
    }
    return frames;
}

}  // namespace tunebox::test
