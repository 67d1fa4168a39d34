#pragma once
// The "Xing"/"Info" frame an encoder puts before the audio: how many frames
// and bytes follow, and, in the encoder's extension to it, how many samples
// of delay and padding it added around the music. The frame itself carries
// no music.

#include <cstddef>
#include <cstdint>
#include <span>

namespace tunebox {

struct XingTag {
    uint32_t frames = 0;           // audio frames after the tag; 0 when not given
    uint32_t streamBytes = 0;      // 0 when the tag gives no byte count
    bool constantBitRate = false;  // "Info": every frame has the first one's rate
    bool gapless = false;          // the encoder's delay and padding are known
    uint32_t encoderDelay = 0;
    uint32_t encoderPadding = 0;
};

// Reads the tag when `frame` (one whole Layer III frame) is a tag frame: its
// side information is all zero and "Xing" or "Info" follows it. Returns
// false for an audio frame.
bool readXingTag(std::span<const uint8_t> frame, XingTag& tag);

}  // namespace tunebox
