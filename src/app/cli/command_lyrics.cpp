#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/cli/commands.h"
#include "app/cli/indexed_png.h"
#include "app/cli/input_checks.h"
#include "app/cli/overwrite_option.h"
#include "lyrics/cdg_screen.h"
#include "lyrics/lyric_format.h"

namespace tunebox::cli {
namespace {

struct LyricsOptions {
    std::string path;
    std::pair<double, std::string> frame;  // seconds, PNG path
    bool wantsFrame = false;
    bool overwrite = false;
};

// "mm:ss.cc", rounded to the hundredth.
std::string lyricTime(double seconds) {
    const long long hundredths = std::llround(seconds * 100);
    char text[32];
    std::snprintf(text, sizeof text, "%02lld:%02lld.%02lld", hundredths / 6000,
                  hundredths / 100 % 60, hundredths % 100);
    return text;
}

std::string fileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::span<const uint8_t> asBytes(const std::string& text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

int printTimedLines(const std::string& path, LyricFormat format, const std::string& bytes) {
    const LyricReading reading = parseLyricText(format, bytes);
    if (!reading.sheet) {
        return refuse(path, reading.problem, kExitBadInput);
    }
    for (const LyricLine& line : reading.sheet->lines) {
        std::cout << lyricTime(line.start) << '\t' << line.text << '\n';
    }
    return 0;
}

void printCensus(const CdgCensus& census) {
    std::cout << "packets: " << census.packets << " (" << census.graphicsPackets << " graphics), "
              << lyricTime(static_cast<double>(census.packets) / kCdgPacketsPerSecond) << '\n';
    for (std::size_t i = 0; i < kCdgInstructions.size(); ++i) {
        std::cout << cdgInstructionName(kCdgInstructions[i]) << ": " << census.instructions[i]
                  << '\n';
    }
    std::cout << "unknown instruction: " << census.unknownInstructions << '\n';
    if (census.trailingBytes != 0) {
        std::cout << "cut: " << census.trailingBytes << " bytes after the last whole packet\n";
    }
}

// The screen's 12-bit colours widened to 8 bits a channel (0xF becomes 0xFF).
std::vector<PngColour> pngPalette(const CdgScreen& screen) {
    std::vector<PngColour> colours;
    for (const uint16_t colour : screen.palette) {
        colours.push_back({static_cast<uint8_t>((colour >> 8 & 0xF) * 17),
                           static_cast<uint8_t>((colour >> 4 & 0xF) * 17),
                           static_cast<uint8_t>((colour & 0xF) * 17)});
    }
    return colours;
}

int writeFrame(const std::string& bytes, double seconds, const std::string& output) {
    const CdgScreen screen = cdgScreenAt(asBytes(bytes), seconds);
    const std::vector<uint8_t> png =
        encodeIndexedPng(CdgScreen::kWidth, CdgScreen::kHeight, screen.pixels, pngPalette(screen));
    std::ofstream out(output, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));
    out.close();
    if (!out) {
        return refuse(output, "cannot be written", kExitBadInput);
    }
    std::cout << "frame at " << lyricTime(seconds) << ": " << output << '\n';
    return 0;
}

int printCdg(const std::string& path, const std::string& bytes, const LyricsOptions& options) {
    const CdgCensus census = countCdgPackets(asBytes(bytes));
    if (census.packets == 0) {
        return refuse(path, "no CD+G packets in it", kExitBadInput);
    }
    printCensus(census);
    return options.wantsFrame ? writeFrame(bytes, options.frame.first, options.frame.second) : 0;
}

int showLyrics(const LyricsOptions& options) {
    const std::string& path = options.path;
    const auto format = lyricFormatOf(path);
    if (!format) {
        return refuse(path, "not a lyrics file: .lrc, .txt (UltraStar) or .cdg", kExitBadInput);
    }
    if (options.wantsFrame) {
        if (*format != LyricFormat::kCdg) {
            return refuse(path, "--frame draws CD+G graphics, and this is not a .cdg file",
                          kExitBadInput);
        }
        if (!(options.frame.first >= 0) || !std::isfinite(options.frame.first)) {
            return refuse(path, "--frame needs a time of 0 seconds or more", kExitBadInput);
        }
        if (const int refused = checkInputAndOutput(path, options.frame.second, options.overwrite);
            refused != 0) {
            return refused;
        }
    } else if (const auto problem = inputRefusal(path)) {
        return refuse(path, *problem, kExitBadInput);
    }
    std::error_code error;
    if (std::filesystem::file_size(path, error) > largestLyricFile(*format) && !error) {
        return refuse(
            path,
            "too big for lyrics (over " + std::to_string(largestLyricFile(*format) >> 20) + " MB)",
            kExitBadInput);
    }
    const std::string bytes = fileBytes(path);
    return *format == LyricFormat::kCdg ? printCdg(path, bytes, options)
                                        : printTimedLines(path, *format, bytes);
}

}  // namespace

void registerLyricsCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand(
        "lyrics", "Show the timed lines of an LRC or UltraStar file, or what a CD+G file draws");
    auto options = std::make_shared<LyricsOptions>();
    command->add_option("FILE", options->path, "A .lrc, UltraStar .txt or .cdg file")->required();
    auto* frame = command->add_option("--frame", options->frame,
                                      "SECONDS OUT.png: write the CD+G screen at that moment");
    addOverwriteOption(*command, options->overwrite);
    command->callback([&status, options, frame] {
        options->wantsFrame = frame->count() > 0;
        status = showLyrics(*options);
    });
}

}  // namespace tunebox::cli
