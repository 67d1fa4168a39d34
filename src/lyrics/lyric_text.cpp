#include "lyrics/lyric_text.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "core/utf8.h"

namespace tunebox {
namespace {

// Code page 1252 where it differs from Latin-1; the five unassigned bytes
// keep their Latin-1 meaning.
constexpr std::array<char32_t, 32> kCp1252High = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// The length of the well-formed UTF-8 sequence at `at`, or 0: overlong forms,
// surrogates and code points past U+10FFFF are not well formed.
std::size_t utf8SequenceLength(std::string_view text, std::size_t at) {
    const auto byte = [&](std::size_t i) { return static_cast<uint8_t>(text[at + i]); };
    const uint8_t lead = byte(0);
    if (lead < 0x80) {
        return 1;
    }
    std::size_t length = 0;
    uint8_t low = 0x80;
    uint8_t high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;
        high = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (at + length > text.size() || byte(1) < low || byte(1) > high) {
        return 0;
    }
    for (std::size_t i = 2; i < length; ++i) {
        if (byte(i) < 0x80 || byte(i) > 0xBF) {
            return 0;
        }
    }
    return length;
}

bool isUtf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        if (static_cast<uint8_t>(text[at]) < 0x80) {
            ++at;
            continue;
        }
        const std::size_t length = utf8SequenceLength(text, at);
        if (length == 0) {
            return false;
        }
        at += length;
    }
    return true;
}

std::string fromCp1252(std::string_view text) {
    std::string out;
    out.reserve(text.size() + text.size() / 4);
    for (const char c : text) {
        const auto byte = static_cast<uint8_t>(c);
        appendUtf8(out, byte >= 0x80 && byte < 0xA0 ? kCp1252High[byte - 0x80] : byte);
    }
    return out;
}

// Unpaired surrogates become U+FFFD; an odd last byte is dropped.
std::string fromUtf16(std::string_view text, bool bigEndian) {
    std::string out;
    out.reserve(text.size());
    const auto unit = [&](std::size_t i) -> char32_t {
        const auto first = static_cast<uint8_t>(text[i]);
        const auto second = static_cast<uint8_t>(text[i + 1]);
        return bigEndian ? (first << 8 | second) : (second << 8 | first);
    };
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        char32_t code = unit(i);
        if (code >= 0xD800 && code <= 0xDBFF && i + 3 < text.size() && unit(i + 2) >= 0xDC00 &&
            unit(i + 2) <= 0xDFFF) {
            code = 0x10000 + ((code - 0xD800) << 10) + (unit(i + 2) - 0xDC00);
            i += 2;
        } else if (code >= 0xD800 && code <= 0xDFFF) {
            code = 0xFFFD;
        }
        appendUtf8(out, code);
    }
    return out;
}

}  // namespace

std::string lyricTextAsUtf8(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        bytes.remove_prefix(3);
    } else if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
        return fromUtf16(bytes.substr(2), bytes[0] == '\xFE');
    }
    return isUtf8(bytes) ? std::string(bytes) : fromCp1252(bytes);
}

std::string_view appendLyricText(std::string& line, std::string_view more) {
    const std::size_t room = kMaxLyricLineBytes - std::min(line.size(), kMaxLyricLineBytes);
    std::size_t take = std::min(room, more.size());
    // Back off to the start of a character: continuation bytes are 10xxxxxx.
    while (take < more.size() && take > 0 && (static_cast<uint8_t>(more[take]) & 0xC0) == 0x80) {
        --take;
    }
    line.append(more.substr(0, take));
    return more.substr(0, take);
}

std::string_view trimmedText(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

}  // namespace tunebox
