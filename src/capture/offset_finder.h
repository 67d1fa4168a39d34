#pragma once
// Finds where a known signal sits inside a recording, by cross-correlation,
// to the sample. Both the calibrate command and the delay tests measure the
// true round trip with it.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tunebox {

struct OffsetSearch {
    bool found = false;
    // captured[frame + offsetFrames] lines up with reference[frame].
    int64_t offsetFrames = 0;
    // Correlation at the peak, normalised to 1 for a perfect copy.
    double match = 0.0;
    // Why nothing was found: silence, clipping or no clear peak.
    std::string reason;
};

// Searches offsets from minOffset to maxOffset frames (either may be
// negative). Samples are mono, full scale 1.0.
OffsetSearch findOffset(std::span<const float> reference, std::span<const float> captured,
                        int64_t minOffset, int64_t maxOffset);

// The left channel of interleaved 16-bit stereo as mono floats.
std::vector<float> leftChannel(std::span<const int16_t> stereo);

}  // namespace tunebox
