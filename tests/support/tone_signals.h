#pragma once
// Plain signals for whole takes: a tone as the accompaniment, a louder tone
// as the singer the meter shows.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "support/native_wav.h"

namespace tunebox::test {

inline std::vector<int16_t> tone(double seconds, double hertz, int16_t left, int16_t right) {
    const auto frames = static_cast<std::size_t>(seconds * 44100);
    std::vector<int16_t> samples(frames * 2);
    for (std::size_t i = 0; i < frames; ++i) {
        const double wave = std::sin(2 * M_PI * hertz * i / 44100.0);
        samples[2 * i] = static_cast<int16_t>(left * wave);
        samples[2 * i + 1] = static_cast<int16_t>(right * wave);
    }
    return samples;
}

// A 440 Hz tone, `seconds` long, as a native WAV file.
inline void writeTone(const std::string& path, double seconds) {
    writeNativeWav(path, tone(seconds, 440, 8000, 8000));
}

// A singer: a loud 220 Hz tone for the meter to show.
inline std::vector<int16_t> loudVoice(double seconds) {
    return tone(seconds, 220, 30000, 20000);
}

}  // namespace tunebox::test
