#pragma once
// Lyrics files come in whatever encoding the editor of the day wrote: UTF-8
// with or without a byte-order mark, UTF-16 with one, and (UltraStar songs
// above all) Windows code page 1252. Everything past this point is UTF-8.

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace tunebox {

// The text of a lyrics file as UTF-8: a byte-order mark is dropped (UTF-16 is
// converted), valid UTF-8 is kept as it is, anything else is read as code
// page 1252, whose upper half is Latin-1.
std::string lyricTextAsUtf8(std::string_view bytes);

// Calls `visit` with each line of `text`, without its end (LF, CR LF or CR).
template <typename Visit>
void forEachTextLine(std::string_view text, Visit&& visit) {
    std::size_t begin = 0;
    while (begin < text.size()) {
        const auto found = std::find_if(text.begin() + static_cast<std::ptrdiff_t>(begin),
                                        text.end(), [](char c) { return c == '\n' || c == '\r'; });
        const auto end = static_cast<std::size_t>(found - text.begin());
        visit(text.substr(begin, end - begin));
        begin =
            end + ((end + 1 < text.size() && text[end] == '\r' && text[end + 1] == '\n') ? 2 : 1);
    }
}

// No screen shows more of one line than this; a file that runs on further is
// damaged, and keeping all of it would only cost memory.
inline constexpr std::size_t kMaxLyricLineBytes = 1024;

// Appends as much of `more` to `line` as keeps it within kMaxLyricLineBytes,
// never splitting a character. Returns what was appended.
std::string_view appendLyricText(std::string& line, std::string_view more);

// `text` without the spaces and tabs at either end.
std::string_view trimmedText(std::string_view text);

}  // namespace tunebox
