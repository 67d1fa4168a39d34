#pragma once
// Finds a known signal in a recording stretch by stretch. A return path that
// is resampled on its own clock (a USB microphone, a loopback between two
// sound cards) drifts by a few samples over seconds; one correlation over the
// whole signal smears across that drift and may find nothing, while each
// short stretch still matches well. The spread of the stretches' offsets
// shows how steady the path is.

#include <cstdint>
#include <span>
#include <string>

namespace tunebox {

struct StretchOffsets {
    bool found = false;
    // The median of the stretches found: captured[frame + offsetFrames]
    // lines up with reference[frame].
    int64_t offsetFrames = 0;
    int64_t earliestFrames = 0;
    int64_t latestFrames = 0;
    int stretchesFound = 0;
    int stretches = 0;
    // Why nothing was found, from the first stretch that failed.
    std::string reason;
};

// Stretches of `stretchFrames` of the reference that hold signal are searched
// for from minOffset to maxOffset; once one is found, the rest are searched
// near it only. Found when at least half of them are.
StretchOffsets findStretchOffsets(std::span<const float> reference, std::span<const float> captured,
                                  int64_t minOffset, int64_t maxOffset, std::size_t stretchFrames);

}  // namespace tunebox
