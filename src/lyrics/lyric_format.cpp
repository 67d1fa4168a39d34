#include "lyrics/lyric_format.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "lyrics/lrc_lyrics.h"
#include "lyrics/ultrastar_lyrics.h"

namespace tunebox {

std::optional<LyricFormat> lyricFormatOf(std::string_view path) {
    const std::size_t dot = path.find_last_of("./");
    if (dot == std::string_view::npos || path[dot] != '.') {
        return std::nullopt;
    }
    std::string extension(path.substr(dot + 1));
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (extension == "lrc") {
        return LyricFormat::kLrc;
    }
    if (extension == "txt") {
        return LyricFormat::kUltraStar;
    }
    if (extension == "cdg") {
        return LyricFormat::kCdg;
    }
    return std::nullopt;
}

LyricReading parseLyricText(LyricFormat format, std::string_view bytes) {
    switch (format) {
        case LyricFormat::kLrc:
            return parseLrc(bytes);
        case LyricFormat::kUltraStar:
            return parseUltraStar(bytes);
        case LyricFormat::kCdg:
            break;
    }
    return lyricRefusal("CD+G holds graphics, not text");
}

}  // namespace tunebox
