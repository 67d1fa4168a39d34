#pragma once
// Measurements of test signals.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace tunebox::test {

// The frequency of the strongest tone in one channel of interleaved samples,
// from its rising crossings. A crossing counts only after the signal has
// been below minus a quarter of its peak, so coding noise is not counted.
inline double toneFrequency(const std::vector<int16_t>& samples, int channels, int channel,
                            double rate) {
    int peak = 1;
    for (std::size_t i = channel; i < samples.size(); i += channels) {
        peak = std::max(peak, std::abs(static_cast<int>(samples[i])));
    }
    const int threshold = peak / 4;
    bool armed = false;
    int crossings = 0;
    std::size_t first = 0;
    std::size_t last = 0;
    for (std::size_t i = channel; i < samples.size(); i += channels) {
        if (samples[i] < -threshold) {
            armed = true;
        } else if (armed && samples[i] > threshold) {
            armed = false;
            first = crossings == 0 ? i : first;
            last = i;
            ++crossings;
        }
    }
    const double frames = static_cast<double>(last - first) / channels;
    return crossings > 1 ? (crossings - 1) / (frames / rate) : 0.0;
}

}  // namespace tunebox::test
