#pragma once
// The "Xing"/"Info" frame an encoder puts first in an MP3 file: how many
// frames and bytes follow, and, in the encoder's extension to it, how many
// samples of delay and padding it added around the audio.

#include <cstdint>
#include <span>

namespace tunebox {

struct XingTag {
    uint32_t frames = 0;           // 0 when the tag gives no frame count
    uint32_t streamBytes = 0;      // 0 when the tag gives no byte count
    bool constantBitRate = false;  // "Info": every frame has the first one's rate
    bool gapless = false;          // the encoder's delay and padding are known
    uint32_t encoderDelay = 0;
    uint32_t encoderPadding = 0;
};

// Bytes of the first frame searched for the tag.
inline constexpr std::size_t kXingLook = 1024;

// Reads the tag from the first frame's bytes (at most its length and
// `kXingLook`); a frame without one gives an empty tag.
XingTag parseXingTag(std::span<const uint8_t> frame);

}  // namespace tunebox
