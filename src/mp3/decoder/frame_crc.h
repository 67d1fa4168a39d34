#pragma once
// The CRC-16 that protects a frame's header and what follows the check word
// (a Layer III frame's side information, a Layer I frame's bit allocation)
// when the header's protection bit asks for it.

#include <cstdint>
#include <span>

#include "mp3/decoder/mpeg_header.h"

namespace tunebox {

// CRC-16 with generator x^16 + x^15 + x^2 + 1 (0x8005), register preset
// to all ones, most significant bit first, continuing from `crc`.
uint16_t crc16(std::span<const uint8_t> bytes, uint16_t crc = 0xffff);

// Whether a protected Layer I or III frame's check word matches its header
// bytes 2-3 and the protected bytes after it; false when `frame` is too
// short to hold them. Frames without protection always match.
bool frameCrcMatches(std::span<const uint8_t> frame, const MpegHeader& header);

}  // namespace tunebox
