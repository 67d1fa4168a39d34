#include "app/cli/lyric_prompt.h"

#include <fstream>
#include <iterator>

#include "lyrics/lyric_finder.h"
#include "lyrics/lyric_format.h"
#include "lyrics/lyric_timing.h"

namespace tunebox::cli {
namespace {

// Up two rows, each cleared before it is written; the next line dimmed.
constexpr const char* kUpTwoRows = "\r\033[2A";
constexpr const char* kClearRow = "\033[K";
constexpr const char* kDim = "\033[2m";
constexpr const char* kPlain = "\033[0m";

}  // namespace

LyricChoice chooseLyrics(const std::string& accompaniment, const std::string& explicitPath) {
    const bool given = !explicitPath.empty();
    const std::optional<std::string> path = given ? explicitPath : findLyricsFor(accompaniment);
    if (!path) {
        return {};
    }
    const auto format = lyricFormatOf(*path);
    if (!format) {
        return {std::nullopt, *path + ": not a lyrics file: .lrc, .txt (UltraStar) or .cdg", given};
    }
    if (*format == LyricFormat::kCdg) {
        return {std::nullopt, *path + ": CD+G graphics are not drawn on a terminal", false};
    }
    std::ifstream in(*path, std::ios::binary);
    if (!in) {
        return {std::nullopt, *path + ": cannot be read", given};
    }
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    LyricReading reading = parseLyricText(*format, bytes);
    if (!reading.sheet) {
        return {std::nullopt, *path + ": " + reading.problem, given};
    }
    return {std::move(reading.sheet), "lyrics: " + *path, false};
}

std::string LyricPrompt::update(double seconds) {
    const std::optional<std::size_t> due = dueLyricLine(sheet_, seconds);
    if (shown_ && *shown_ == due) {
        return {};
    }
    shown_ = due;
    const std::size_t next = due ? *due + 1 : 0;
    const std::string current = due ? sheet_.lines[*due].text : "";
    const std::string after = next < sheet_.lines.size() ? sheet_.lines[next].text : "";
    return std::string(kUpTwoRows) + kClearRow + current + "\n" + kClearRow + kDim + after +
           kPlain + "\n";
}

}  // namespace tunebox::cli
