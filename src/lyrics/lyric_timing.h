#pragma once
// Which line of a sheet is due at a moment of the song.

#include <cstddef>
#include <optional>

#include "lyrics/lyric_sheet.h"

namespace tunebox {

// The last line due at or before `seconds` into the accompaniment; nothing
// before the first line.
std::optional<std::size_t> dueLyricLine(const LyricSheet& sheet, double seconds);

}  // namespace tunebox
