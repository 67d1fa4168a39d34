#pragma once
// Which kind of lyrics a file holds, told by its name as singers' folders
// name them: "Song.lrc", "Song.txt" (UltraStar), "Song.cdg" (beside Song.mp3).

#include <optional>
#include <string_view>

#include "lyrics/lyric_sheet.h"

namespace tunebox {

enum class LyricFormat { kLrc, kUltraStar, kCdg };

// By the file name's extension, in any case; nothing for other files.
std::optional<LyricFormat> lyricFormatOf(std::string_view path);

// Reads the bytes of a file of one of the timed-text formats (LRC or UltraStar).
LyricReading parseLyricText(LyricFormat format, std::string_view bytes);

}  // namespace tunebox
