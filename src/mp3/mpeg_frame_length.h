#pragma once
// The built-in decoder's front end: where a frame starts, what its header
// says, and how long the frame is, free-format streams included. All layers
// of MPEG-1, MPEG-2 and MPEG 2.5 are recognised; integer arithmetic only.

#include <cstdint>
#include <span>

namespace tunebox {

struct DecoderHeader {
    uint32_t versionKind = 0;  // 1: 12-bit sync (MPEG-1, MPEG-2); 2: MPEG 2.5
    uint32_t id = 0;           // 1: MPEG-1
    uint32_t layer = 0;        // 3: Layer I, 2: Layer II, 1: Layer III
    uint32_t protection = 0;
    uint32_t bitRateIndex = 0;
    uint32_t samplingIndex = 0;
    uint32_t padding = 0;
    uint32_t privateBit = 0;
    uint32_t mode = 0;
    uint32_t modeExtension = 0;
    uint32_t copyright = 0;
    uint32_t original = 0;
    uint32_t emphasis = 0;
};

// The first i with byte i = 0xFF and byte i + 1's high nibble 0xF or 0xE;
// -1 when there is none.
long mpegFindFrameStart(std::span<const uint8_t> bytes);

// The length of the frame at the start of `bytes` without its padding slot,
// or 0 when no valid header starts there.
uint32_t mpegFrameLength(std::span<const uint8_t> bytes, DecoderHeader& header);

// Finds the first frame, parses it and returns its length (0 on failure),
// with its offset and bit rate in bits per second.
uint32_t mpegParseFirstFrame(std::span<const uint8_t> bytes, DecoderHeader& header,
                             uint32_t& bitRate, uint32_t& offset);

}  // namespace tunebox
