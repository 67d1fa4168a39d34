#pragma once
// The signal played to measure the round trip: clicks at irregular spacing,
// so the cross-correlation has one peak and no echo of it one period away.

#include <cstdint>
#include <vector>

namespace tunebox {

// Interleaved 16-bit stereo, both channels alike; `frames` long with
// `leadInFrames` of silence first.
std::vector<int16_t> measurementClicks(uint32_t frames, uint32_t leadInFrames);

}  // namespace tunebox
