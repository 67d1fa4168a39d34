#include "lyrics/lyric_sheet.h"

#include <algorithm>
#include <utility>

namespace tunebox {

void sortLyricLines(LyricSheet& sheet) {
    std::stable_sort(sheet.lines.begin(), sheet.lines.end(),
                     [](const LyricLine& a, const LyricLine& b) { return a.start < b.start; });
}

LyricReading lyricRefusal(std::string problem) {
    return {std::nullopt, std::move(problem)};
}

}  // namespace tunebox
