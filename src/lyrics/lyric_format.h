#pragma once
// Which kind of lyrics a file holds, told by its name as singers' folders
// name them: "Song.lrc", "Song.txt" (UltraStar), "Song.cdg" (beside Song.mp3).

#include <cstddef>
#include <optional>
#include <string_view>

#include "lyrics/lyric_sheet.h"

namespace tunebox {

enum class LyricFormat { kLrc, kUltraStar, kCdg };

// By the file name's extension, in any case; nothing for other files.
std::optional<LyricFormat> lyricFormatOf(std::string_view path);

// More than any timed-text lyrics file holds (a song's words and times take
// tens of kilobytes): a bigger one is damaged or something else, and is not
// read, since reading one of many megabytes takes seconds.
inline constexpr std::size_t kMaxLyricTextBytes = 1024 * 1024;
// Larger CD+G files are not lyrics. CD+G takes 7,200 bytes a second, so a
// two-hour stream fits.
inline constexpr std::size_t kMaxCdgBytes = std::size_t{64} << 20;

// The most a lyrics file of the format may hold.
constexpr std::size_t largestLyricFile(LyricFormat format) {
    return format == LyricFormat::kCdg ? kMaxCdgBytes : kMaxLyricTextBytes;
}

// Reads the bytes of a file of one of the timed-text formats (LRC or UltraStar).
LyricReading parseLyricText(LyricFormat format, std::string_view bytes);

}  // namespace tunebox
