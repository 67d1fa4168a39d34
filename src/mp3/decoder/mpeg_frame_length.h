#pragma once
// How long a frame is, free-format streams included, whose length only the
// distance to the next frame tells. All layers of MPEG-1, MPEG-2 and
// MPEG 2.5 are recognised; integer arithmetic only.

#include <cstdint>
#include <span>

#include "mp3/decoder/mpeg_header.h"

namespace tunebox {

// The length of the frame at the start of `bytes` without its padding slot,
// or 0 when no valid header starts there.
uint32_t mpegFrameLength(std::span<const uint8_t> bytes, MpegHeader& header);

// The same with the padding slot: the bytes the frame takes in the stream
// (a length below 2 is no frame and is returned as it is).
uint32_t mpegWholeFrameLength(std::span<const uint8_t> bytes, MpegHeader& header);

// Finds the first frame, parses it and returns its length (0 on failure),
// with its offset and bit rate in bits per second.
uint32_t mpegParseFirstFrame(std::span<const uint8_t> bytes, MpegHeader& header, uint32_t& bitRate,
                             uint32_t& offset);

}  // namespace tunebox
