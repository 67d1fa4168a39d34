#pragma once
// What the benchmarks feed the engines: the same noise at every run, and an
// effect chain set up as a player sets it up.

#include <cstdint>
#include <vector>

#include "core/wave_format.h"
#include "effects/effect_chain.h"
#include "effects/equalizer_stage.h"

namespace tunebox::bench {

// Noise of about -12 dBFS from a fixed linear congruential sequence.
inline std::vector<int16_t> noise(std::size_t samples) {
    std::vector<int16_t> result(samples);
    uint32_t seed = 12345;
    for (auto& sample : result) {
        seed = seed * 1664525u + 1013904223u;
        sample = static_cast<int16_t>(static_cast<int32_t>(seed >> 16) % 16001 - 8000);
    }
    return result;
}

// The chain for engine blocks at full level with the given stages on.
inline EffectControl chainControl(const BandValues& bands, bool equaliser, bool reverb) {
    EffectControl ctl;
    ctl.blockSize = kEngineBlockBytes;
    ctl.level = 100;
    fltEqualizerInit(ctl, bands, kNativeSampleRate);
    ctl.equaliserFlag = equaliser ? 1 : 0;
    ctl.reverbFlag = reverb ? 1 : 0;
    return ctl;
}

}  // namespace tunebox::bench
