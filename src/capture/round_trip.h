#pragma once
// Measures the true round trip from the default output to the default input:
// plays the measurement clicks while capturing, finds them in the capture by
// cross-correlation, and sets the delay the device positions give beside it.

#include <cstdint>
#include <string>

#include "capture/offset_finder.h"
#include "platform/audio_backend.h"

namespace tunebox {

struct RoundTrip {
    // Empty when both devices played and captured to the end.
    std::string deviceError;
    OffsetSearch search;
    // Capture position minus playback position, in bytes, as the mixer
    // would measure it while playing (the median of its readings).
    int64_t positionDelayBytes = 0;

    int64_t trueDelayBytes() const { return search.offsetFrames * 4; }
};

RoundTrip measureRoundTrip(AudioBackend& backend);

}  // namespace tunebox
