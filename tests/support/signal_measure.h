#pragma once
// Measurements of test signals.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
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

// The longest run of silent frames (every byte of a 16-bit stereo frame
// zero) in native PCM: a gap in what a device was given or played.
inline std::size_t longestSilence(const std::vector<uint8_t>& bytes) {
    std::size_t longest = 0;
    std::size_t run = 0;
    for (std::size_t at = 0; at + 4 <= bytes.size(); at += 4) {
        const bool silent =
            bytes[at] == 0 && bytes[at + 1] == 0 && bytes[at + 2] == 0 && bytes[at + 3] == 0;
        run = silent ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return longest;
}

// The largest step between neighbouring samples of one channel in native
// PCM, over the loudest sample: a click shows as a step no sound of the
// signal's pitches makes. A sine of frequency f steps at most 2 pi f / rate
// of its peak.
inline double steepestStep(const std::vector<uint8_t>& bytes) {
    std::vector<int16_t> samples(bytes.size() / 2);
    std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
    int steepest = 0;
    int peak = 1;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        peak = std::max(peak, std::abs(int{samples[i]}));
        if (i >= 2) {
            steepest = std::max(steepest, std::abs(samples[i] - samples[i - 2]));
        }
    }
    return double(steepest) / peak;
}

}  // namespace tunebox::test
