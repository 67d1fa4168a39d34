#pragma once
// Which line of a sheet is due at a moment of the song.

#include <cstddef>
#include <optional>

#include "lyrics/lyric_sheet.h"

namespace tunebox {

// The last line due at or before `seconds` into the accompaniment; nothing
// before the first line.
std::optional<std::size_t> dueLyricLine(const LyricSheet& sheet, double seconds);

// How far the singing has got through a line's syllables at `seconds`:
// `sung` of them wholly, and `partOfNext` (0 to 1) of the one after those.
// Between two syllables the wipe waits at the end of the first.
struct LyricProgress {
    std::size_t sung = 0;
    double partOfNext = 0;
};
LyricProgress lyricProgress(const LyricLine& line, double seconds);

}  // namespace tunebox
