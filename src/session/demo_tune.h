#pragma once
// A short accompaniment made from nothing: a melody with soft harmonics over
// a bass line, eight seconds at 120 beats per minute, in the native format.

#include <cstdint>
#include <vector>

namespace tunebox {

inline constexpr uint32_t kDemoTuneSeconds = 8;

// Interleaved 16-bit samples, left then right, 44,100 frames per second.
std::vector<int16_t> synthesiseDemoTune();

}  // namespace tunebox
