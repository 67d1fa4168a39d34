#pragma once
// The "Xing"/"Info" frame that encoders put before the audio, and the LAME
// extension inside it: how many audio frames follow, how many samples the
// encoder put in front of the music and after its end. The frame itself
// carries no music.

#include <cstdint>
#include <span>

namespace tunebox {

struct LameTag {
    uint32_t frames = 0;  // audio frames after the tag frame; 0 when not given
    uint32_t encoderDelay = 0;
    uint32_t padding = 0;
};

// Reads the tag when `frame` (one whole Layer III frame) is a tag frame: the
// side information is all zero but for a check word, and "Xing" or "Info"
// follows it. Returns false for an audio frame.
bool parseLameTag(std::span<const uint8_t> frame, LameTag& tag);

}  // namespace tunebox
