#pragma once
// A voice made from nothing, for the simulated microphone: a sung vowel with
// vibrato, phrased in notes with breaths between them, well below full scale
// so that it rarely clips over an accompaniment.

#include <cstdint>
#include <vector>

namespace tunebox {

// Interleaved 16-bit stereo (the same in both channels), `frames` long.
std::vector<int16_t> synthesiseVoice(uint32_t frames);

}  // namespace tunebox
