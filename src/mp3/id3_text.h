#pragma once
// How ID3v2 text frames become the tag record's texts: byte-order-marked
// UTF-16 is turned into UTF-8, anything else is kept byte for byte, and the
// genre frame's "(n)" codes are looked up in the ID3v1 genre list.

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace tunebox {

// Every text field of the tag record holds at most this many bytes of text.
inline constexpr std::size_t kId3TextBytes = 2047;

// Copies the first `count` bytes of `data` (at most 2,047): UTF-16 with either
// byte-order mark is read little-endian and written as UTF-8, never splitting a
// character; other text is copied up to its first NUL.
std::string id3CopyText(std::span<const char> data, std::size_t count);

// "(17)Rock" gives "Rock", "(17)" the name of code 17, "(12)" nothing at all,
// a code outside the list "", and text without a code itself.
// `stores` is false when the rule leaves the genre as it was.
std::string id3GenreText(std::string_view text, bool& stores);

// The ID3v1 genre names 0..125; 126 and beyond are empty.
std::string_view id3GenreName(int code);

// The decimal integer at the start of a text, as the C runtime reads it.
int id3TextNumber(std::string_view text);

}  // namespace tunebox
