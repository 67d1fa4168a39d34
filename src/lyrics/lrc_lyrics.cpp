#include "lyrics/lrc_lyrics.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "lyrics/lyric_text.h"

namespace tunebox {
namespace {

// Enough time tags for any chorus; more on one line is damage.
constexpr std::size_t kMaxTagsPerLine = 64;
// The longest time tag body read: "mmmmm:ss.xxx".
constexpr std::size_t kMaxTimeTagBytes = 12;

std::optional<long> digitsValue(std::string_view digits, std::size_t maxDigits) {
    long value = 0;
    if (digits.empty() || digits.size() > maxDigits) {
        return std::nullopt;
    }
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size()) {
        return std::nullopt;
    }
    return value;
}

// "mm:ss", "mm:ss.x", "mm:ss.xx", "mm:ss.xxx" (also with ':' before the
// fraction, which some editors write) in seconds.
std::optional<double> lrcTime(std::string_view tag) {
    if (tag.size() > kMaxTimeTagBytes) {
        return std::nullopt;
    }
    const std::size_t colon = tag.find(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view rest = tag.substr(colon + 1);
    const std::size_t point = rest.find_first_of(".:");
    const auto minutes = digitsValue(tag.substr(0, colon), 5);
    const auto seconds = digitsValue(rest.substr(0, point), 2);
    if (!minutes || !seconds || *seconds >= 60) {
        return std::nullopt;
    }
    double time = *minutes * 60.0 + *seconds;
    if (point != std::string_view::npos) {
        const std::string_view fraction = rest.substr(point + 1);
        const auto value = digitsValue(fraction, 3);
        if (!value) {
            return std::nullopt;
        }
        constexpr double kScale[] = {1, 10, 100, 1000};
        time += *value / kScale[fraction.size()];
    }
    return time;
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

// A line's words before they are placed: start times as the word tags give
// them, an end only where a later tag closes the word.
struct TimedWord {
    double start;
    std::optional<double> end;
    std::string text;
};

struct LrcLine {
    std::vector<double> starts;
    std::string text;
    std::vector<TimedWord> words;
};

// Splits the text after the time tags at its "<mm:ss.xx>" word tags. A '<'
// that does not open a word tag is text.
void readWords(std::string_view body, LrcLine& line) {
    std::optional<double> wordStart;
    std::string pending;
    const auto closeWord = [&](std::optional<double> end) {
        std::string kept(appendLyricText(line.text, pending));
        pending.clear();
        if (!kept.empty()) {
            if (line.words.size() < kMaxLyricSyllables) {
                line.words.push_back(
                    {wordStart.value_or(line.starts.front()), end, std::move(kept)});
            }
        } else if (end && !line.words.empty() && !line.words.back().end) {
            line.words.back().end = end;
        }
    };
    std::size_t at = 0;
    while (at < body.size()) {
        const std::size_t open = body.find('<', at);
        appendLyricText(pending, body.substr(at, open - at));
        if (open == std::string_view::npos) {
            break;
        }
        const std::size_t close = body.substr(open, kMaxTimeTagBytes + 2).find('>');
        const auto time = close == std::string_view::npos
                              ? std::nullopt
                              : lrcTime(body.substr(open + 1, close - 1));
        if (!time) {
            appendLyricText(pending, "<");
            at = open + 1;
            continue;
        }
        closeWord(time);
        wordStart = time;
        at = open + close + 1;
    }
    closeWord(std::nullopt);
    // Without any word tag the line is timed only as a whole.
    if (!wordStart) {
        line.words.clear();
    }
}

struct LrcFile {
    LyricSheet sheet;
    long offsetMs = 0;
    std::vector<LrcLine> lines;
};

void readHeaderTag(std::string_view tag, LrcFile& file) {
    const std::size_t colon = tag.find(':');
    if (colon == std::string_view::npos) {
        return;
    }
    const std::string key = lowerCase(trimmedText(tag.substr(0, colon)));
    const std::string_view value = trimmedText(tag.substr(colon + 1));
    if (key == "ti") {
        appendLyricText(file.sheet.title, value);
    } else if (key == "ar") {
        appendLyricText(file.sheet.artist, value);
    } else if (key == "offset") {
        const std::string_view digits = value.starts_with('+') ? value.substr(1) : value;
        long offset = 0;
        const auto [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), offset);
        if (error == std::errc() && std::abs(offset) < 24L * 3600 * 1000) {
            file.offsetMs = offset;
        }
    }
}

void readLine(std::string_view text, LrcFile& file) {
    LrcLine line;
    std::size_t at = text.find_first_not_of(" \t");
    while (at != std::string_view::npos && text[at] == '[') {
        const std::size_t close = text.find(']', at);
        if (close == std::string_view::npos) {
            break;
        }
        const std::string_view tag = text.substr(at + 1, close - at - 1);
        if (const auto time = lrcTime(tag)) {
            if (line.starts.size() < kMaxTagsPerLine) {
                line.starts.push_back(*time);
            }
        } else if (!line.starts.empty()) {
            break;  // a bracket in the words themselves, as in "[Chorus]"
        } else {
            readHeaderTag(tag, file);
        }
        at = text.find_first_not_of(" \t", close + 1);
    }
    if (line.starts.empty() || file.lines.size() >= kMaxLyricLines) {
        return;
    }
    if (at != std::string_view::npos) {
        readWords(trimmedText(text.substr(at)), line);
    }
    file.lines.push_back(std::move(line));
}

double shifted(double time, double by) {
    return std::max(0.0, time + by);
}

// Each tag of a line gives one sheet line; the word times move with the tag.
LyricSheet placeLines(LrcFile& file) {
    LyricSheet& sheet = file.sheet;
    const double offset = -file.offsetMs / 1000.0;
    for (const LrcLine& line : file.lines) {
        for (const double start : line.starts) {
            if (sheet.lines.size() >= kMaxLyricLines) {
                break;
            }
            const double move = start - line.starts.front() + offset;
            LyricLine placed{shifted(start, offset), line.text, {}};
            for (const TimedWord& word : line.words) {
                placed.syllables.push_back({shifted(word.start, move),
                                            word.end ? shifted(*word.end, move) : -1.0, word.text});
            }
            sheet.lines.push_back(std::move(placed));
        }
    }
    sortLyricLines(sheet);
    // A last word without a closing tag lasts until the next line is due.
    for (std::size_t i = 0; i < sheet.lines.size(); ++i) {
        LyricLine& line = sheet.lines[i];
        const double next = i + 1 < sheet.lines.size() ? sheet.lines[i + 1].start : line.start;
        for (LyricSyllable& syllable : line.syllables) {
            if (syllable.end < 0) {
                syllable.end = std::max(syllable.start, next);
            }
        }
    }
    return std::move(sheet);
}

}  // namespace

LyricReading parseLrc(std::string_view bytes) {
    const std::string text = lyricTextAsUtf8(bytes);
    LrcFile file;
    forEachTextLine(text, [&file](std::string_view line) { readLine(line, file); });
    if (file.lines.empty()) {
        return lyricRefusal("no timed lyric lines in it");
    }
    return {placeLines(file), {}};
}

}  // namespace tunebox
