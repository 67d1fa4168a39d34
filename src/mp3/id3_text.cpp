#include "mp3/id3_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "core/utf8.h"

namespace tunebox {
namespace {

constexpr std::array<std::string_view, 126> kGenreNames{"Blues",
                                                        "Classic Rock",
                                                        "Country",
                                                        "Dance",
                                                        "Disco",
                                                        "Funk",
                                                        "Grunge",
                                                        "Hip-Hop",
                                                        "Jazz",
                                                        "Metal",
                                                        "New Age",
                                                        "Oldies",
                                                        "Other",
                                                        "Pop",
                                                        "R&B",
                                                        "Rap",
                                                        "Reggae",
                                                        "Rock",
                                                        "Techno",
                                                        "Industrial",
                                                        "Alternative",
                                                        "Ska",
                                                        "Death Metal",
                                                        "Pranks",
                                                        "Soundtrack",
                                                        "Euro-Techno",
                                                        "Ambient",
                                                        "Trip-Hop",
                                                        "Vocal",
                                                        "Jazz+Funk",
                                                        "Fusion",
                                                        "Trance",
                                                        "Classical",
                                                        "Instrumental",
                                                        "Acid",
                                                        "House",
                                                        "Game",
                                                        "Sound Clip",
                                                        "Gospel",
                                                        "Noise",
                                                        "AlternRock",
                                                        "Bass",
                                                        "Soul",
                                                        "Punk",
                                                        "Space",
                                                        "Meditative",
                                                        "Instrumental Pop",
                                                        "Instrumental Rock",
                                                        "Ethnic",
                                                        "Gothic",
                                                        "Darkwave",
                                                        "Techno-Industrial",
                                                        "Electronic",
                                                        "Pop-Folk",
                                                        "Eurodance",
                                                        "Dream",
                                                        "Southern Rock",
                                                        "Comedy",
                                                        "Cult",
                                                        "Gangsta",
                                                        "Top 40",
                                                        "Christian Rap",
                                                        "Pop/Funk",
                                                        "Jungle",
                                                        "Native American",
                                                        "Cabaret",
                                                        "New Wave",
                                                        "Psychadelic",
                                                        "Rave",
                                                        "Showtunes",
                                                        "Trailer",
                                                        "Lo-Fi",
                                                        "Tribal",
                                                        "Acid Punk",
                                                        "Acid Jazz",
                                                        "Polka",
                                                        "Retro",
                                                        "Musical",
                                                        "Rock & Roll",
                                                        "Hard Rock",
                                                        "Folk",
                                                        "Folk-Rock",
                                                        "National Folk",
                                                        "Swing",
                                                        "Fast Fusion",
                                                        "Bebob",
                                                        "Latin",
                                                        "Revival",
                                                        "Celtic",
                                                        "Bluegrass",
                                                        "Avantgarde",
                                                        "Gothic Rock",
                                                        "Progressive Rock",
                                                        "Psychedelic Rock",
                                                        "Symphonic Rock",
                                                        "Slow Rock",
                                                        "Big Band",
                                                        "Chorus",
                                                        "Easy Listening",
                                                        "Acoustic",
                                                        "Humour",
                                                        "Speech",
                                                        "Chanson",
                                                        "Opera",
                                                        "Chamber Music",
                                                        "Sonata",
                                                        "Symphony",
                                                        "Booty Bass",
                                                        "Primus",
                                                        "Porn Groove",
                                                        "Satire",
                                                        "Slow Jam",
                                                        "Club",
                                                        "Tango",
                                                        "Samba",
                                                        "Folklore",
                                                        "Ballad",
                                                        "Power Ballad",
                                                        "Rhythmic Soul",
                                                        "Freestyle",
                                                        "Duet",
                                                        "Punk Rock",
                                                        "Drum Solo",
                                                        "A capella",
                                                        "Euro-House",
                                                        "Dance Hall"};

constexpr char32_t kReplacement = 0xFFFD;

// Little-endian UTF-16 units up to the first NUL unit.
std::vector<char16_t> utf16Units(std::span<const char> bytes) {
    std::vector<char16_t> units;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto unit = static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                                static_cast<unsigned char>(bytes[i + 1]) << 8);
        if (unit == 0) {
            break;
        }
        units.push_back(unit);
    }
    return units;
}

std::string utf16ToUtf8(std::span<const char> bytes, std::size_t limit) {
    const std::vector<char16_t> units = utf16Units(bytes);
    std::string out;
    for (std::size_t i = 0; i < units.size(); ++i) {
        char32_t code = units[i];
        const bool high = code >= 0xD800 && code < 0xDC00;
        const bool lowNext =
            i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] < 0xE000;
        if (high && lowNext) {
            code = 0x10000 + ((code - 0xD800) << 10) + (units[++i] - 0xDC00);
        } else if (code >= 0xD800 && code < 0xE000) {
            code = kReplacement;  // a lone surrogate
        }
        std::string encoded;
        appendUtf8(encoded, code);
        if (out.size() + encoded.size() > limit) {
            break;
        }
        out += encoded;
    }
    return out;
}

bool startsWithByteOrderMark(std::span<const char> data) {
    if (data.size() < 2) {
        return false;
    }
    const auto first = static_cast<unsigned char>(data[0]);
    const auto second = static_cast<unsigned char>(data[1]);
    return (first == 0xFF && second == 0xFE) || (first == 0xFE && second == 0xFF);
}

}  // namespace

std::string id3CopyText(std::span<const char> data, std::size_t count) {
    count = std::min({count, kId3TextBytes, data.size()});
    const std::span<const char> text = data.first(count);
    if (startsWithByteOrderMark(text)) {
        // UTF-8 needs up to half as much again as UTF-16 for Japanese text, so
        // the limit is the field, not the frame's byte count.
        return utf16ToUtf8(text.subspan(2), kId3TextBytes);
    }
    const auto end = std::find(text.begin(), text.end(), '\0');
    return {text.begin(), end};
}

std::string id3GenreText(std::string_view text, bool& stores) {
    stores = true;
    const std::string zeroTerminated(text.substr(0, text.find('\0')));
    int code = 0;
    std::array<char, kId3TextBytes + 1> rest{};
    const int fields = std::sscanf(zeroTerminated.c_str(), "(%d)%2047[^\n]", &code, rest.data());
    if (fields < 1) {
        return zeroTerminated;
    }
    if (fields == 2) {
        return rest.data();
    }
    if (code == 12) {
        stores = false;  // code 12 ("Other") is deliberately left out
        return {};
    }
    return std::string(id3GenreName(code));
}

std::string_view id3GenreName(int code) {
    if (code < 0 || code >= static_cast<int>(kGenreNames.size())) {
        return {};
    }
    return kGenreNames[static_cast<std::size_t>(code)];
}

int id3TextNumber(std::string_view text) {
    const std::string zeroTerminated(text.substr(0, text.find('\0')));
    const long value = std::strtol(zeroTerminated.c_str(), nullptr, 10);
    return static_cast<int>(std::clamp<long>(value, INT32_MIN, INT32_MAX));
}

}  // namespace tunebox
