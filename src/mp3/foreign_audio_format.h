#pragma once
// Audio files of kinds Tunebox does not read, recognised by their first
// bytes, so that a refusal can say what the file is instead of calling it
// damaged or taking its bytes for MPEG frames.

#include <cstdint>
#include <span>
#include <string_view>

namespace tunebox {

// How many of a file's first bytes `foreignAudioFormat` wants to see.
inline constexpr std::size_t kForeignFormatHeadBytes = 65536;

// "FLAC", "AIFF", "ADTS AAC", "Ogg" or "MP4" when the bytes (the start of a
// file, ID3v2 tags included) begin a file of that kind; empty otherwise.
std::string_view foreignAudioFormat(std::span<const uint8_t> head);

}  // namespace tunebox
