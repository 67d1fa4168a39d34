#include "lyrics/ultrastar_lyrics.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "lyrics/lyric_text.h"

namespace tunebox {
namespace {

// Beats and shifts beyond this are damage; within it no sum of them can
// overflow.
constexpr int64_t kMaxBeatNumber = 1'000'000'000;

struct Note {
    int64_t beat;
    int64_t length;
    std::string text;
};

struct SongFile {
    LyricSheet sheet;
    std::optional<double> bpm;
    double gapMs = 0;
    bool relative = false;
    int voice = 1;
    int64_t lineBase = 0;  // relative mode: where the current line's beats count from
    std::vector<std::vector<Note>> lines;
    std::vector<Note> current;
    bool ended = false;
};

// The next whitespace-separated integer of `text` from `at`.
std::optional<int64_t> nextInteger(std::string_view text, std::size_t& at) {
    at = std::min(text.find_first_not_of(" \t", at), text.size());
    int64_t value = 0;
    const char* begin = text.data() + at;
    const auto [end, error] = std::from_chars(begin, text.data() + text.size(), value);
    if (error != std::errc() || std::llabs(value) > kMaxBeatNumber) {
        return std::nullopt;
    }
    at += static_cast<std::size_t>(end - begin);
    return value;
}

// "300", "300.5" and, as European editors write it, "300,5".
std::optional<double> decimalValue(std::string_view text) {
    std::string number(trimmedText(text));
    std::replace(number.begin(), number.end(), ',', '.');
    double value = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error != std::errc() || number.empty() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

bool sameWord(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
        return std::toupper(x) == std::toupper(y);
    });
}

void readHeader(std::string_view line, SongFile& song) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
        return;
    }
    const std::string_view key = trimmedText(line.substr(1, colon - 1));
    const std::string_view value = trimmedText(line.substr(colon + 1));
    if (sameWord(key, "TITLE")) {
        appendLyricText(song.sheet.title, value);
    } else if (sameWord(key, "ARTIST")) {
        appendLyricText(song.sheet.artist, value);
    } else if (sameWord(key, "MP3") || sameWord(key, "AUDIO")) {
        song.sheet.audioFile = std::string(value.substr(0, kMaxLyricLineBytes));
    } else if (sameWord(key, "BPM")) {
        song.bpm = decimalValue(value);
    } else if (sameWord(key, "GAP")) {
        song.gapMs = std::clamp(decimalValue(value).value_or(0.0), -1e9, 1e9);
    } else if (sameWord(key, "RELATIVE")) {
        song.relative = sameWord(value, "YES");
    }
}

void closeLine(SongFile& song) {
    if (!song.current.empty() && song.lines.size() < kMaxLyricLines) {
        song.lines.push_back(std::move(song.current));
    }
    song.current.clear();
}

void readNote(std::string_view line, SongFile& song) {
    std::size_t at = 1;
    const auto beat = nextInteger(line, at);
    const auto length = nextInteger(line, at);
    const auto pitch = nextInteger(line, at);
    if (!beat || !length || !pitch || song.current.size() >= kMaxLyricSyllables) {
        return;
    }
    // One space separates the pitch from the syllable; any more belong to it
    // and mark the start of a word.
    std::string text;
    appendLyricText(text, line.substr(std::min(at + 1, line.size())));
    song.current.push_back({song.lineBase + *beat, std::max<int64_t>(*length, 0), std::move(text)});
}

void readBreak(std::string_view line, SongFile& song) {
    closeLine(song);
    if (!song.relative) {
        return;
    }
    std::size_t at = 1;
    const auto breakBeat = nextInteger(line, at);
    const auto shift = nextInteger(line, at);
    song.lineBase += shift.value_or(breakBeat.value_or(0));
}

void readVoice(std::string_view line, SongFile& song) {
    closeLine(song);
    std::size_t at = 1;
    song.voice = static_cast<int>(nextInteger(line, at).value_or(0));
    song.lineBase = 0;
}

void readLine(std::string_view text, SongFile& song) {
    const std::string_view line = text.substr(std::min(text.find_first_not_of(" \t"), text.size()));
    if (line.empty() || song.ended) {
        return;
    }
    const bool firstVoice = song.voice == 1;
    switch (line.front()) {
        case '#':
            readHeader(line, song);
            break;
        case ':':
        case '*':
        case 'F':
        case 'R':
        case 'G':
            if (firstVoice) {
                readNote(line, song);
            }
            break;
        case '-':
            if (firstVoice) {
                readBreak(line, song);
            }
            break;
        case 'P':
            readVoice(line, song);
            break;
        case 'E':
            closeLine(song);
            song.ended = true;
            break;
        default:
            break;
    }
}

LyricLine placedLine(const std::vector<Note>& notes, double gapSeconds, double beatSeconds) {
    const auto timeOf = [&](int64_t beat) {
        return std::max(0.0, gapSeconds + static_cast<double>(beat) * beatSeconds);
    };
    LyricLine line;
    line.start = timeOf(notes.front().beat);
    std::string text;
    for (const Note& note : notes) {
        line.syllables.push_back({timeOf(note.beat), timeOf(note.beat + note.length), note.text});
        appendLyricText(text, note.text);
    }
    line.text = std::string(trimmedText(text));
    return line;
}

}  // namespace

double ultraStarBeatSeconds(double bpm) {
    return 60.0 / (bpm * 4.0);
}

LyricReading parseUltraStar(std::string_view bytes) {
    const std::string text = lyricTextAsUtf8(bytes);
    SongFile song;
    forEachTextLine(text, [&song](std::string_view line) { readLine(line, song); });
    closeLine(song);
    if (!song.bpm || *song.bpm <= 0 || *song.bpm > 1e6) {
        return lyricRefusal("no usable #BPM in it");
    }
    if (song.lines.empty()) {
        return lyricRefusal("no notes in it");
    }
    const double beatSeconds = ultraStarBeatSeconds(*song.bpm);
    for (const std::vector<Note>& notes : song.lines) {
        song.sheet.lines.push_back(placedLine(notes, song.gapMs / 1000.0, beatSeconds));
    }
    sortLyricLines(song.sheet);
    return {std::move(song.sheet), {}};
}

}  // namespace tunebox
