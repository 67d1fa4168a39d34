#include "mp3/lame_tag.h"

#include <algorithm>
#include <cstring>

#include "mp3/mpeg_frame_header.h"

namespace tunebox {
namespace {

constexpr uint32_t kFramesPresent = 0x1;
constexpr uint32_t kBytesPresent = 0x2;
constexpr uint32_t kTocPresent = 0x4;
constexpr uint32_t kQualityPresent = 0x8;
constexpr std::size_t kTocBytes = 100;
// Encoder name (9), revision (1), lowpass (1), peak (4), two gains (2 + 2),
// flags (1), bit rate (1), then delay and padding in three bytes.
constexpr std::size_t kDelayOffset = 21;
constexpr std::size_t kExtensionBytes = 24;

uint32_t loadBe32(const uint8_t* bytes) {
    return static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16 |
           static_cast<uint32_t>(bytes[2]) << 8 | bytes[3];
}

}  // namespace

bool parseLameTag(std::span<const uint8_t> frame, LameTag& tag) {
    MpegFrameHeader header;
    if (!parseFrameHeader(frame, header)) {
        return false;
    }
    const std::span<const uint8_t> body =
        frame.first(std::min(frame.size(), header.frameBytes())).subspan(kFrameHeaderBytes);
    std::size_t at = header.sideInfoBytes();
    if (body.size() < at + 8) {
        return false;
    }
    // The first two bytes may hold a check word; the rest of the side
    // information of a tag frame is zero.
    if (std::any_of(body.begin() + 2, body.begin() + static_cast<std::ptrdiff_t>(at),
                    [](uint8_t byte) { return byte != 0; })) {
        return false;
    }
    if (std::memcmp(&body[at], "Xing", 4) != 0 && std::memcmp(&body[at], "Info", 4) != 0) {
        return false;
    }
    LameTag parsed;
    const uint32_t flags = loadBe32(&body[at + 4]);
    at += 8;
    const auto has = [&](std::size_t bytes) { return at + bytes <= body.size(); };
    if ((flags & kFramesPresent) != 0 && has(4)) {
        parsed.frames = loadBe32(&body[at]);
        at += 4;
    }
    at += (flags & kBytesPresent) != 0 ? 4 : 0;
    at += (flags & kTocPresent) != 0 ? kTocBytes : 0;
    at += (flags & kQualityPresent) != 0 ? 4 : 0;
    // Without an encoder name the extension is absent (zero bytes).
    if (has(kExtensionBytes) && body[at] != 0) {
        const uint8_t* delays = &body[at + kDelayOffset];
        parsed.encoderDelay = static_cast<uint32_t>(delays[0]) << 4 | delays[1] >> 4;
        parsed.padding = (static_cast<uint32_t>(delays[1] & 0x0F) << 8) | delays[2];
    }
    tag = parsed;
    return true;
}

}  // namespace tunebox
