#pragma once
// Signals and a ready effect control record for the effect tests.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <numbers>
#include <vector>

#include "core/heap.h"
#include "core/wave_format.h"
#include "effects/effect_control.h"

namespace tunebox::test {

inline constexpr int kRate = 44100;

inline BandValues flatBands() {
    BandValues values;
    values.fill(kFlatBandValue);
    return values;
}

// A record set up for `blockBytes` with every stage switched off.
inline EffectControl makeControl(const BandValues& values = flatBands(),
                                 uint32_t blockBytes = kEngineBlockBytes) {
    EffectControl ctl;
    ctl.blockSize = blockBytes;
    ctl.level = 100;
    fltEqualizerInit(ctl, values, kRate);
    return ctl;
}

inline std::vector<int16_t> stereoSine(double frequency, double amplitude, std::size_t frames) {
    std::vector<int16_t> samples(2 * frames);
    for (std::size_t i = 0; i < frames; ++i) {
        const auto value = static_cast<int16_t>(
            amplitude * std::sin(2.0 * std::numbers::pi * frequency * i / kRate));
        samples[2 * i] = value;
        samples[2 * i + 1] = value;
    }
    return samples;
}

// Deterministic, full-band, different on both channels.
inline std::vector<int16_t> stereoNoise(std::size_t frames, int16_t amplitude, uint32_t seed = 1) {
    std::vector<int16_t> samples(2 * frames);
    for (auto& sample : samples) {
        seed = seed * 1664525u + 1013904223u;
        sample = static_cast<int16_t>(static_cast<int32_t>(seed >> 16) % (2 * amplitude + 1) -
                                      amplitude);
    }
    return samples;
}

inline uint32_t bytesOf(const std::vector<int16_t>& samples) {
    return static_cast<uint32_t>(samples.size() * sizeof(int16_t));
}

using BlockProcessor = std::function<void(EffectControl&, int16_t*, uint32_t)>;

// Runs `process` over consecutive blocks whose frame counts cycle through
// `blockFrames`.
inline void processInBlocks(EffectControl& ctl, std::vector<int16_t>& samples,
                            const std::vector<std::size_t>& blockFrames,
                            const BlockProcessor& process) {
    std::size_t frame = 0;
    for (std::size_t k = 0; frame < samples.size() / 2; ++k) {
        const std::size_t count =
            std::min(blockFrames[k % blockFrames.size()], samples.size() / 2 - frame);
        process(ctl, samples.data() + 2 * frame, static_cast<uint32_t>(4 * count));
        frame += count;
    }
}

}  // namespace tunebox::test
