#include "app/cli/lyric_prompt.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "app/cli/input_checks.h"
#include "lyrics/lyric_finder.h"
#include "lyrics/lyric_format.h"
#include "lyrics/lyric_timing.h"
#include "playback/heard_position.h"

namespace tunebox::cli {
namespace {

// Up two rows, each cleared before it is written; the next line dimmed.
constexpr const char* kUpTwoRows = "\r\033[2A";
constexpr const char* kClearRow = "\033[K";
constexpr const char* kDim = "\033[2m";
constexpr const char* kPlain = "\033[0m";

constexpr std::size_t kMegabyte = 1024 * 1024;

}  // namespace

LyricChoice chooseLyrics(const std::string& accompaniment, const std::string& givenPath,
                         const std::string& songPath) {
    const bool given = !givenPath.empty();
    const std::optional<std::string> path = given              ? givenPath
                                            : songPath.empty() ? findLyricsFor(accompaniment)
                                                               : songPath;
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
    // A pipe or a device named with --lyrics would block the read for ever.
    if (const auto problem = given ? inputRefusal(*path) : std::nullopt) {
        return {std::nullopt, *path + ": " + *problem, true};
    }
    std::error_code error;
    const auto size = std::filesystem::file_size(*path, error);
    if (!error && size > kMaxLyricTextBytes) {
        return {std::nullopt,
                *path + ": too big for lyrics (over " +
                    std::to_string(kMaxLyricTextBytes / kMegabyte) + " MB); playing without them",
                false, true};
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

std::string LyricPrompt::follow(WaveCtl& player, uint32_t runStart) {
    const std::optional<double> heard = heardSongSeconds(player, runStart);
    return heard ? update(*heard) : std::string{};
}

bool openLyricPrompt(const SongFiles& files, std::optional<LyricPrompt>& prompt) {
    LyricChoice lyrics = chooseLyrics(files.audio, files.givenLyrics, files.songLyrics);
    if (lyrics.refused || lyrics.warning) {
        std::cerr << "tunebox: " << lyrics.note << "\n";
        if (lyrics.refused) {
            return false;
        }
    } else if (!lyrics.note.empty() && isatty(STDOUT_FILENO) == 1) {
        std::cout << lyrics.note << "\n";
    }
    if (lyrics.sheet) {
        prompt.emplace(std::move(*lyrics.sheet));
    }
    return true;
}

}  // namespace tunebox::cli
