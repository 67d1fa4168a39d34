#include "mp3/id3_v1_fields.h"

#include <string>
#include <string_view>

#include "mp3/id3_text.h"

namespace tunebox {
namespace {

constexpr std::size_t kTitleAt = 3;
constexpr std::size_t kArtistAt = 33;
constexpr std::size_t kAlbumAt = 63;
constexpr std::size_t kYearAt = 93;
constexpr std::size_t kCommentAt = 97;
constexpr std::size_t kTextBytes = 30;
// ID3v1.1 ends the comment early: a NUL, then the track number.
constexpr std::size_t kTrackMarkAt = kCommentAt + 28;
constexpr std::size_t kTrackAt = kCommentAt + 29;
constexpr std::size_t kGenreAt = 127;
constexpr uint8_t kNoGenre = 255;

std::string fieldText(const std::array<uint8_t, kId3v1Bytes>& block, std::size_t at,
                      std::size_t width) {
    std::string text(reinterpret_cast<const char*>(&block[at]), width);
    text.resize(text.find('\0') == std::string::npos ? width : text.find('\0'));
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

void fillText(std::string& target, std::string text) {
    if (target.empty()) {
        target = std::move(text);
    }
}

}  // namespace

void id3FillFromV1(Id3Tag& tag, const std::array<uint8_t, kId3v1Bytes>& block) {
    fillText(tag.title, fieldText(block, kTitleAt, kTextBytes));
    fillText(tag.artist, fieldText(block, kArtistAt, kTextBytes));
    fillText(tag.album, fieldText(block, kAlbumAt, kTextBytes));
    if (block[kGenreAt] != kNoGenre) {
        fillText(tag.genre, std::string(id3GenreName(block[kGenreAt])));
    }
    if (tag.year == 0) {
        tag.year = id3TextNumber(fieldText(block, kYearAt, 4));
    }
    const bool hasTrack = block[kTrackMarkAt] == 0 && block[kTrackAt] != 0;
    if (tag.track == 0 && hasTrack) {
        tag.track = block[kTrackAt];
    }
}

}  // namespace tunebox
