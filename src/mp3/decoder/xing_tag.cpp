#include "mp3/decoder/xing_tag.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "mp3/decoder/mpeg_header.h"

namespace tunebox {
namespace {

constexpr uint32_t kFramesPresent = 0x01;
constexpr uint32_t kBytesPresent = 0x02;
constexpr uint32_t kTocPresent = 0x04;
constexpr uint32_t kQualityPresent = 0x08;
constexpr std::size_t kTocBytes = 100;
// In the encoder's extension: a 9-byte version text, and at byte 21 the
// delay and padding as two 12-bit numbers.
constexpr std::size_t kGapOffset = 21;

uint32_t loadBe32(const uint8_t* bytes) {
    return static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16 |
           static_cast<uint32_t>(bytes[2]) << 8 | bytes[3];
}

bool startsWith(std::span<const uint8_t> bytes, std::string_view text) {
    return bytes.size() >= text.size() && std::memcmp(bytes.data(), text.data(), text.size()) == 0;
}

// The encoders whose extension carries a trustworthy delay and padding; the
// opener's length and the decoder's trim both go by it, so they agree.
bool knownEncoder(std::span<const uint8_t> extension) {
    return startsWith(extension, "LAME") || startsWith(extension, "Lavf") ||
           startsWith(extension, "Lavc");
}

void readEncoderGap(std::span<const uint8_t> extension, XingTag& tag) {
    if (extension.size() < kGapOffset + 3 || !knownEncoder(extension)) {
        return;
    }
    const uint8_t* gap = &extension[kGapOffset];
    tag.gapless = true;
    tag.encoderDelay = static_cast<uint32_t>(gap[0]) << 4 | gap[1] >> 4;
    tag.encoderPadding = static_cast<uint32_t>(gap[1] & 0x0F) << 8 | gap[2];
}

// Where the tag stands in a tag frame: after the header, its check word and
// the side information, which a tag frame leaves all zero.
std::span<const uint8_t> tagBody(std::span<const uint8_t> frame) {
    MpegHeader header;
    if (!mpegParseHeader(frame, header) || !header.isLayer3()) {
        return {};
    }
    frame = frame.first(std::min(frame.size(), header.frameBytes()));
    const std::size_t sideStart = kFrameHeaderBytes + (header.crcProtected() ? kCrcBytes : 0);
    const std::size_t tagStart = sideStart + header.sideInfoBytes();
    if (frame.size() < tagStart + 8 ||
        std::any_of(frame.begin() + static_cast<std::ptrdiff_t>(sideStart),
                    frame.begin() + static_cast<std::ptrdiff_t>(tagStart),
                    [](uint8_t byte) { return byte != 0; })) {
        return {};
    }
    return frame.subspan(tagStart);
}

}  // namespace

bool readXingTag(std::span<const uint8_t> frame, XingTag& tag) {
    const std::span<const uint8_t> body = tagBody(frame);
    if (!startsWith(body, "Xing") && !startsWith(body, "Info")) {
        return false;
    }
    XingTag read;
    read.constantBitRate = startsWith(body, "Info");
    const uint32_t flags = loadBe32(&body[4]);
    std::size_t at = 8;
    const auto has = [&](std::size_t bytes) { return at + bytes <= body.size(); };
    if ((flags & kFramesPresent) != 0 && has(4)) {
        read.frames = loadBe32(&body[at]);
        at += 4;
    }
    if ((flags & kBytesPresent) != 0 && has(4)) {
        read.streamBytes = loadBe32(&body[at]);
        at += 4;
    }
    at += ((flags & kTocPresent) != 0 ? kTocBytes : 0) + ((flags & kQualityPresent) != 0 ? 4 : 0);
    if (at < body.size()) {
        readEncoderGap(body.subspan(at), read);
    }
    tag = read;
    return true;
}

}  // namespace tunebox
