#pragma once
// A steady stereo tone, and its frequency measured back from the samples,
// for the tests of the key and tempo stage.

#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

namespace tunebox::test {

// Interleaved stereo, both channels alike.
inline std::vector<int16_t> stereoTone(double hertz, std::size_t frames, double amplitude = 12000) {
    std::vector<int16_t> samples(frames * 2);
    for (std::size_t i = 0; i < frames; ++i) {
        const double phase = 2 * std::numbers::pi * hertz * double(i) / 44100;
        samples[2 * i] = samples[2 * i + 1] = static_cast<int16_t>(amplitude * std::sin(phase));
    }
    return samples;
}

// From the upward zero crossings of the left channel, each placed between
// its two samples: the cycles counted over the time they took. Only the
// middle half counts, away from the edges where a stage settles; a crossing
// counts once the signal has been well below zero, so that noise about zero
// makes no extra ones.
inline double leftFrequency(const std::vector<int16_t>& samples) {
    constexpr int16_t kArmedBelow = -1000;
    const std::size_t frames = samples.size() / 2;
    double first = -1;
    double last = -1;
    int cycles = -1;
    bool armed = false;
    for (std::size_t i = 2 * (frames / 4 + 1); i < 2 * (frames * 3 / 4); i += 2) {
        const double before = samples[i - 2];
        const double now = samples[i];
        armed = armed || now < kArmedBelow;
        if (armed && before < 0 && now >= 0) {
            armed = false;
            const double at = double(i / 2) - 1 + before / (before - now);
            first = first < 0 ? at : first;
            last = at;
            ++cycles;
        }
    }
    return cycles > 0 ? cycles * 44100.0 / (last - first) : 0.0;
}

}  // namespace tunebox::test
