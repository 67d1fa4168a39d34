#include "platform/profile_file.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>

namespace tunebox {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlank = " \t\r\v\f";

std::string_view trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlank);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

char asciiLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool sameName(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, [](char x, char y) { return asciiLower(x) == asciiLower(y); });
}

std::string_view unquote(std::string_view value) {
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
        value.back() == value.front()) {
        return value.substr(1, value.size() - 2);
    }
    return value;
}

enum class LineKind { kOther, kSection, kKey };

struct ParsedLine {
    LineKind kind = LineKind::kOther;
    std::string_view name;
    std::string_view value;
};

ParsedLine parseLine(std::string_view line) {
    const std::string_view content = trim(line);
    if (content.empty() || content.front() == ';') {
        return {};
    }
    if (content.front() == '[') {
        const std::size_t close = content.rfind(']');
        if (close != std::string_view::npos && close > 0) {
            return {LineKind::kSection, trim(content.substr(1, close - 1)), {}};
        }
    }
    const std::size_t equals = content.find('=');
    if (equals == std::string_view::npos) {
        return {};
    }
    return {LineKind::kKey, trim(content.substr(0, equals)), trim(content.substr(equals + 1))};
}

// Where a key stands in the text, or where it would go.
struct KeyPlace {
    bool sectionFound = false;
    bool keyFound = false;
    std::size_t lineBegin = 0;  // the key's line, without its line break
    std::size_t lineEnd = 0;
    std::string_view value;
    std::size_t insertAt = 0;  // after the section's last non-blank line
};

// Only the first section of that name counts, as it does for the platform.
KeyPlace locate(std::string_view text, std::string_view section, std::string_view key) {
    KeyPlace place;
    std::size_t begin = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    while (begin < text.size()) {
        const std::size_t newline = text.find('\n', begin);
        const std::size_t next = newline == std::string_view::npos ? text.size() : newline + 1;
        std::size_t end = newline == std::string_view::npos ? text.size() : newline;
        if (newline != std::string_view::npos && end > begin && text[end - 1] == '\r') {
            --end;
        }
        const std::string_view line = text.substr(begin, end - begin);
        const ParsedLine parsed = parseLine(line);
        if (parsed.kind == LineKind::kSection) {
            if (place.sectionFound) {
                return place;
            }
            place.sectionFound = sameName(parsed.name, section);
        }
        if (place.sectionFound) {
            if (parsed.kind == LineKind::kKey && sameName(parsed.name, key)) {
                place.keyFound = true;
                place.lineBegin = begin;
                place.lineEnd = end;
                place.value = parsed.value;
                return place;
            }
            if (!trim(line).empty()) {
                place.insertAt = next;
            }
        }
        begin = next;
    }
    return place;
}

// The file's bytes, empty when it does not exist; false when it exists but
// cannot be read as a file.
bool readWhole(const std::filesystem::path& file, std::string& text) {
    text.clear();
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        return true;
    }
    if (status.type() != std::filesystem::file_type::regular) {
        return false;
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        return false;
    }
    text.assign(std::istreambuf_iterator<char>(in), {});
    return !in.bad();
}

// The found value, or nothing when the file, section or key is missing.
bool findValue(const std::filesystem::path& file, std::string_view section, std::string_view key,
               std::string& value) {
    std::string text;
    if (!readWhole(file, text)) {
        return false;
    }
    const KeyPlace place = locate(text, section, key);
    if (!place.keyFound) {
        return false;
    }
    value = unquote(place.value);
    return true;
}

// Accumulates modulo 2^32 like the platform's parse, so long digit runs wrap
// instead of overflowing.
int32_t parseLeadingInteger(std::string_view text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    uint32_t magnitude = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') {
            break;
        }
        magnitude = magnitude * 10 + static_cast<uint32_t>(c - '0');
    }
    return static_cast<int32_t>(negative ? 0u - magnitude : magnitude);
}

std::string_view utf8Prefix(std::string_view text, std::size_t maxBytes) {
    if (text.size() <= maxBytes) {
        return text;
    }
    std::size_t cut = maxBytes;
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) {
        --cut;
    }
    return text.substr(0, cut);
}

std::string_view lineBreakOf(std::string_view text) {
    const std::size_t newline = text.find('\n');
    return newline != std::string_view::npos && newline > 0 && text[newline - 1] == '\r' ? "\r\n"
                                                                                         : "\n";
}

void insertLine(std::string& text, std::size_t at, std::string_view line,
                std::string_view lineBreak) {
    std::string inserted;
    if (at > 0 && text[at - 1] != '\n') {
        inserted += lineBreak;  // the file's last line had no line break yet
    }
    inserted.append(line).append(lineBreak);
    text.insert(at, inserted);
}

std::string withKey(std::string text, std::string_view section, std::string_view key,
                    std::string_view value) {
    const std::string keyLine = std::string(key) + "=" + std::string(value);
    const std::string_view lineBreak = lineBreakOf(text);
    const KeyPlace place = locate(text, section, key);
    if (place.keyFound) {
        text.replace(place.lineBegin, place.lineEnd - place.lineBegin, keyLine);
    } else if (place.sectionFound) {
        insertLine(text, place.insertAt, keyLine, lineBreak);
    } else {
        insertLine(text, text.size(), "[" + std::string(section) + "]", lineBreak);
        insertLine(text, text.size(), keyLine, lineBreak);
    }
    return text;
}

// Through a temporary file and a rename, so that a failed write never leaves
// half a settings file behind.
bool replaceFile(const std::filesystem::path& file, std::string_view text) {
    std::error_code error;
    if (file.has_parent_path()) {
        std::filesystem::create_directories(file.parent_path(), error);
    }
    std::filesystem::path temporary = file;
    temporary += ".new";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
        if (!out.flush()) {
            std::filesystem::remove(temporary, error);
            return false;
        }
    }
    std::filesystem::rename(temporary, file, error);
    if (error) {
        std::filesystem::remove(temporary, error);
        return false;
    }
    return true;
}

}  // namespace

int32_t profileReadInt(const std::filesystem::path& file, std::string_view section,
                       std::string_view key, int32_t defaultValue) {
    std::string value;
    if (!findValue(file, section, key, value) || value.empty()) {
        return defaultValue;
    }
    return parseLeadingInteger(value);
}

std::string profileReadString(const std::filesystem::path& file, std::string_view section,
                              std::string_view key, std::string_view defaultValue,
                              std::size_t bufferBytes) {
    std::string value;
    if (!findValue(file, section, key, value)) {
        value = defaultValue;
    }
    const std::size_t room = bufferBytes == 0 ? 0 : bufferBytes - 1;
    return std::string(utf8Prefix(value, room));
}

int profileWriteString(const std::filesystem::path& file, std::string_view section,
                       std::string_view key, std::string_view value) {
    std::string text;
    if (!readWhole(file, text)) {
        return 0;
    }
    const std::string_view oneLine = value.substr(0, value.find_first_of("\r\n"));
    return replaceFile(file, withKey(std::move(text), section, key, oneLine)) ? 1 : 0;
}

}  // namespace tunebox
