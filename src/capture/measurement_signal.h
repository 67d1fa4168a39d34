#pragma once
// The signals played to measure a round trip.

#include <cstdint>
#include <vector>

namespace tunebox {

// Clicks at irregular spacing, so the cross-correlation has one peak and no
// echo of it one period away. Interleaved 16-bit stereo, both channels alike;
// `frames` long with `leadInFrames` of silence first.
std::vector<int16_t> measurementClicks(uint32_t frames, uint32_t leadInFrames);

// Continuous noise below about 4 kHz, in the same layout. Every part of it
// identifies its own place, so short stretches can be found one by one on a
// return path whose clock drifts; being low-passed, its correlation peak is
// several samples wide and survives the smear of a few samples that a
// resampler's drift adds within one stretch.
std::vector<int16_t> measurementNoise(uint32_t frames, uint32_t leadInFrames);

}  // namespace tunebox
