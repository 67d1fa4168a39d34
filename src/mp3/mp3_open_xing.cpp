#include "mp3/mp3_open_xing.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

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

// The encoders whose extension carries a trustworthy delay and padding.
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

}  // namespace

XingTag parseXingTag(std::span<const uint8_t> frame) {
    frame = frame.first(std::min(frame.size(), kXingLook));
    XingTag tag;
    for (std::size_t i = 0; i + 4 < frame.size(); ++i) {
        const auto rest = frame.subspan(i);
        if (!startsWith(rest, "Xing") && !startsWith(rest, "Info")) {
            continue;
        }
        if (rest.size() < 12) {
            return tag;
        }
        tag.constantBitRate = startsWith(rest, "Info");
        const uint32_t flags = loadBe32(&rest[4]);
        std::size_t at = 8;
        if ((flags & kFramesPresent) != 0) {
            tag.frames = loadBe32(&rest[at]);
            at += 4;
        }
        if ((flags & kBytesPresent) != 0 && at + 4 <= rest.size()) {
            tag.streamBytes = loadBe32(&rest[at]);
            at += 4;
        }
        at +=
            ((flags & kTocPresent) != 0 ? kTocBytes : 0) + ((flags & kQualityPresent) != 0 ? 4 : 0);
        if (at < rest.size()) {
            readEncoderGap(rest.subspan(at), tag);
        }
        return tag;
    }
    return tag;
}

}  // namespace tunebox
