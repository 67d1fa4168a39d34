#include "session/synthetic_voice.h"

#include <array>
#include <cmath>
#include <numbers>

#include "core/wave_format.h"

namespace tunebox {
namespace {

constexpr double kRate = kNativeSampleRate;
constexpr double kNoteSeconds = 0.5;
constexpr double kBreathSeconds = 0.06;
constexpr double kPeak = 6000.0;
constexpr double kVibratoHz = 5.5;
constexpr double kVibratoDepth = 0.012;  // of the pitch
// A small tune, in semitones above 220 Hz, and the harmonic weights of an
// open "ah".
constexpr std::array<int, 8> kMelody{0, 4, 7, 12, 7, 4, 5, 2};
constexpr std::array<double, 6> kHarmonics{1.0, 0.6, 0.45, 0.25, 0.12, 0.06};

double envelope(double timeInNote) {
    const double sung = kNoteSeconds - kBreathSeconds;
    if (timeInNote >= sung) {
        return 0.0;
    }
    const double attack = std::min(1.0, timeInNote / 0.03);
    const double release = std::min(1.0, (sung - timeInNote) / 0.05);
    return attack * release;
}

}  // namespace

std::vector<int16_t> synthesiseVoice(uint32_t frames) {
    std::vector<int16_t> samples(std::size_t{frames} * 2);
    double phase = 0.0;
    double weightSum = 0.0;
    for (double weight : kHarmonics) {
        weightSum += weight;
    }
    for (uint32_t i = 0; i < frames; ++i) {
        const double time = i / kRate;
        const auto note = static_cast<std::size_t>(time / kNoteSeconds);
        const double pitch =
            220.0 * std::pow(2.0, kMelody[note % kMelody.size()] / 12.0) *
            (1.0 + kVibratoDepth * std::sin(2 * std::numbers::pi * kVibratoHz * time));
        phase += 2 * std::numbers::pi * pitch / kRate;
        double value = 0.0;
        for (std::size_t h = 0; h < kHarmonics.size(); ++h) {
            value += kHarmonics[h] * std::sin(phase * double(h + 1));
        }
        const double level = kPeak / weightSum * envelope(std::fmod(time, kNoteSeconds));
        const auto sample = static_cast<int16_t>(std::lround(value * level));
        samples[2 * i] = sample;
        samples[2 * i + 1] = sample;
    }
    return samples;
}

}  // namespace tunebox
