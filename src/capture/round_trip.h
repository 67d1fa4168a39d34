#pragma once
// Measures the true round trip from the default output to the default input:
// plays the measurement noise while capturing, finds it in the capture stretch
// by stretch, and sets the delay the device positions give beside it.

#include <cstdint>
#include <string>

#include "capture/stretch_offsets.h"
#include "platform/audio_backend.h"

namespace tunebox {

struct RoundTrip {
    // Empty when both devices played and captured to the end.
    std::string deviceError;
    StretchOffsets search;
    // Capture position minus playback position, in bytes, as the mixer
    // would measure it while playing (the median of its readings).
    int64_t positionDelayBytes = 0;

    int64_t trueDelayBytes() const { return search.offsetFrames * 4; }
    // What the positions do not see, to be added to their delay.
    int64_t correctionBytes() const { return trueDelayBytes() - positionDelayBytes; }
};

RoundTrip measureRoundTrip(AudioBackend& backend);

}  // namespace tunebox
