#pragma once
// The timed words of a song, whatever file they came from: lines in the order
// they are due, each with its syllables when the file times them one by one.

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tunebox {

// One sung piece of a line. `text` keeps its own spacing, so the syllables of
// a line put end to end give the line's text, but for spaces at its ends.
struct LyricSyllable {
    double start = 0;  // seconds from the start of the accompaniment
    double end = 0;
    std::string text;
};

struct LyricLine {
    double start = 0;  // seconds from the start of the accompaniment
    std::string text;
    // Empty when the file times only whole lines.
    std::vector<LyricSyllable> syllables;
};

struct LyricSheet {
    std::string title;
    std::string artist;
    // The audio file the lyrics were written for, as the file names it.
    std::string audioFile;
    std::vector<LyricLine> lines;  // by start time
};

// More lines than any song has: a file that claims more is damaged, and the
// parsers stop taking lines there rather than fill memory.
inline constexpr std::size_t kMaxLyricLines = 100'000;
// Likewise for the syllables of one line.
inline constexpr std::size_t kMaxLyricSyllables = 1'000;

// A parser's answer: the sheet, or why the bytes hold none.
struct LyricReading {
    std::optional<LyricSheet> sheet;
    std::string problem;
};

// Puts the lines in the order they are due; lines due at the same moment
// keep the order the file gave them.
void sortLyricLines(LyricSheet& sheet);

// The reading of a file that holds no timed lines.
LyricReading lyricRefusal(std::string problem);

}  // namespace tunebox
