#include "mp3/mpeg_header_chain.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tunebox {

bool startsWithTag(std::span<const uint8_t> bytes) {
    constexpr std::array<std::string_view, 4> kMarkers{"TAG", "APETAGEX", "LYRICSBEGIN", "ID3"};
    return std::any_of(kMarkers.begin(), kMarkers.end(), [&](std::string_view marker) {
        return bytes.size() >= marker.size() &&
               std::equal(marker.begin(), marker.end(), bytes.begin(),
                          [](char a, uint8_t b) { return static_cast<uint8_t>(a) == b; });
    });
}

bool mpegChainConfirmed(std::span<const uint8_t> buffer, std::size_t offset,
                        const MpegHeader& first, BufferEnd end) {
    MpegHeader current = first;
    for (int seen = 1; seen < kAgreeingHeaders; ++seen) {
        const std::size_t next = offset + current.frameBytes();
        if (next == buffer.size() && end == BufferEnd::endOfAudio) {
            return true;
        }
        if (next >= buffer.size()) {
            return false;
        }
        const auto rest = buffer.subspan(next);
        if (startsWithTag(rest)) {
            return true;
        }
        MpegHeader following;
        if (!mpegParseHeader(rest, following) || !mpegSameStream(first, following)) {
            return false;
        }
        offset = next;
        current = following;
    }
    return true;
}

}  // namespace tunebox
