#include "lyrics/lyric_timing.h"

#include <algorithm>

namespace tunebox {

std::optional<std::size_t> dueLyricLine(const LyricSheet& sheet, double seconds) {
    const auto after =
        std::upper_bound(sheet.lines.begin(), sheet.lines.end(), seconds,
                         [](double time, const LyricLine& line) { return time < line.start; });
    if (after == sheet.lines.begin()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(after - sheet.lines.begin() - 1);
}

LyricProgress lyricProgress(const LyricLine& line, double seconds) {
    LyricProgress progress;
    for (const LyricSyllable& syllable : line.syllables) {
        if (seconds >= syllable.end) {
            ++progress.sung;
            continue;
        }
        if (seconds > syllable.start) {
            progress.partOfNext = (seconds - syllable.start) / (syllable.end - syllable.start);
        }
        break;
    }
    return progress;
}

}  // namespace tunebox
