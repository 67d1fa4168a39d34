#include "session/demo_tune.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "core/wave_format.h"

namespace tunebox {
namespace {

constexpr double kSampleRate = kNativeFormat.samplesPerSec;
constexpr double kBeatSeconds = 0.5;
constexpr double kAttackSeconds = 0.015;
constexpr double kReleaseSeconds = 0.03;
// The loudest sample ends up about 3 dB below full scale.
constexpr double kPeakLevel = 0.7 * 32767.0;

struct Note {
    double startBeat;
    double beats;
    int midiNote;
};

// How a line sounds: relative strengths of the first harmonics, how fast a
// struck note dies away, its level and where it sits between left (0) and
// right (1).
struct Voice {
    std::array<double, 4> harmonics;
    double decaySeconds;
    double gain;
    double pan;
};

// Four bars over C, A minor, F and G, resolving to C.
constexpr std::array<Note, 15> kMelody{{
    {0, 1, 64},
    {1, 1, 67},
    {2, 1.5, 72},
    {3.5, 0.5, 71},  // E G C B
    {4, 1, 69},
    {5, 1, 72},
    {6, 2, 76},  // A C E
    {8, 1, 74},
    {9, 1, 72},
    {10, 1, 69},
    {11, 1, 65},  // D C A F
    {12, 1, 67},
    {13, 1, 71},
    {14, 1.8, 72},  // G B C
    {15, 0.8, 76},  // E, the last sparkle
}};

constexpr std::array<Note, 8> kBass{{
    {0, 2, 48},
    {2, 2, 43},
    {4, 2, 45},
    {6, 2, 40},
    {8, 2, 41},
    {10, 2, 48},
    {12, 2, 43},
    {14, 1.8, 36},
}};

constexpr Voice kMelodyVoice{{1.0, 0.35, 0.15, 0.06}, 0.9, 0.5, 0.6};
constexpr Voice kBassVoice{{1.0, 0.25, 0.05, 0.0}, 1.5, 0.6, 0.45};

double frequencyOf(int midiNote) {
    return 440.0 * std::pow(2.0, (midiNote - 69) / 12.0);
}

double envelope(double t, double heldSeconds, double decaySeconds) {
    const double attack = std::min(1.0, t / kAttackSeconds);
    const double release =
        t < heldSeconds ? 1.0 : std::max(0.0, 1.0 - (t - heldSeconds) / kReleaseSeconds);
    return attack * std::exp(-t / decaySeconds) * release;
}

double tone(double t, double frequency, const Voice& voice) {
    double sum = 0.0;
    for (std::size_t k = 0; k < voice.harmonics.size(); ++k) {
        sum += voice.harmonics[k] *
               std::sin(2.0 * std::numbers::pi * frequency * static_cast<double>(k + 1) * t);
    }
    return sum;
}

// Adds one note into the interleaved stereo mix.
void renderNote(std::vector<double>& mix, const Voice& voice, const Note& note) {
    const double frequency = frequencyOf(note.midiNote);
    const double heldSeconds = note.beats * kBeatSeconds;
    const auto first = static_cast<std::size_t>(note.startBeat * kBeatSeconds * kSampleRate);
    const auto count = static_cast<std::size_t>((heldSeconds + kReleaseSeconds) * kSampleRate);
    const std::size_t frames = mix.size() / 2;
    for (std::size_t i = 0; i < count && first + i < frames; ++i) {
        const double t = static_cast<double>(i) / kSampleRate;
        const double value =
            voice.gain * envelope(t, heldSeconds, voice.decaySeconds) * tone(t, frequency, voice);
        mix[2 * (first + i)] += value * (1.0 - voice.pan);
        mix[2 * (first + i) + 1] += value * voice.pan;
    }
}

template <std::size_t N>
void renderLine(std::vector<double>& mix, const Voice& voice, const std::array<Note, N>& notes) {
    for (const Note& note : notes) {
        renderNote(mix, voice, note);
    }
}

std::vector<int16_t> toSamples(const std::vector<double>& mix) {
    double peak = 0.0;
    for (const double value : mix) {
        peak = std::max(peak, std::abs(value));
    }
    const double scale = peak > 0.0 ? kPeakLevel / peak : 0.0;
    std::vector<int16_t> samples(mix.size());
    std::transform(mix.begin(), mix.end(), samples.begin(), [scale](double value) {
        return static_cast<int16_t>(std::lround(value * scale));
    });
    return samples;
}

}  // namespace

std::vector<int16_t> synthesiseDemoTune() {
    const std::size_t frames = kDemoTuneSeconds * kNativeFormat.samplesPerSec;
    std::vector<double> mix(frames * kNativeFormat.channels, 0.0);
    renderLine(mix, kMelodyVoice, kMelody);
    renderLine(mix, kBassVoice, kBass);
    return toSamples(mix);
}

}  // namespace tunebox
