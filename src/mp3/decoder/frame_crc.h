#pragma once
// The CRC-16 that protects a Layer III frame's header and side information
// when the header's protection bit asks for it.

#include <cstdint>
#include <span>

#include "mp3/decoder/mpeg_header.h"

namespace tunebox {

// CRC-16 with generator x^16 + x^15 + x^2 + 1 (0x8005), register preset
// to all ones, most significant bit first, continuing from `crc`.
uint16_t crc16(std::span<const uint8_t> bytes, uint16_t crc = 0xffff);

// Whether a protected frame's check word matches its header bytes 2-3 and
// side information. `frame` holds at least the header, check word and side
// information. Frames without protection always match.
bool frameCrcMatches(std::span<const uint8_t> frame, const MpegHeader& header);

}  // namespace tunebox
