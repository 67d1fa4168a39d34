#include "capture/measurement_signal.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace tunebox {
namespace {

constexpr uint32_t kClickFrames = 64;
constexpr uint32_t kMinimumGap = 2205;  // 50 ms
constexpr uint32_t kGapSpread = 4410;
constexpr double kClickLevel = 0.5 * 32767;
// Fixed: every run plays the same signal.
constexpr unsigned kSeed = 20240611;

// Two one-pole low passes at about 4 kHz.
constexpr double kSmoothing = 0.43;
constexpr double kNoiseRms = 0.2 * 32767;
constexpr uint32_t kFadeFrames = 441;

void setFrame(std::vector<int16_t>& samples, uint32_t frame, double value) {
    const auto sample = static_cast<int16_t>(std::clamp(value, -32767.0, 32767.0));
    samples[2 * std::size_t(frame)] = sample;
    samples[2 * std::size_t(frame) + 1] = sample;
}

}  // namespace

std::vector<int16_t> measurementClicks(uint32_t frames, uint32_t leadInFrames) {
    std::vector<int16_t> samples(std::size_t(frames) * 2);
    std::mt19937 random(kSeed);
    std::uniform_int_distribution<uint32_t> gap(0, kGapSpread);
    for (uint32_t start = leadInFrames; start + kClickFrames <= frames;
         start += kClickFrames + kMinimumGap + gap(random)) {
        // A short windowed burst of noise: broadband, so the peak is sharp.
        std::uniform_real_distribution<double> noise(-1.0, 1.0);
        for (uint32_t i = 0; i < kClickFrames; ++i) {
            const double window = std::sin(M_PI * (i + 0.5) / kClickFrames);
            setFrame(samples, start + i, kClickLevel * window * noise(random));
        }
    }
    return samples;
}

std::vector<int16_t> measurementNoise(uint32_t frames, uint32_t leadInFrames) {
    std::mt19937 random(kSeed);
    std::normal_distribution<double> noise(0.0, 1.0);
    const uint32_t length = frames > leadInFrames ? frames - leadInFrames : 0;
    std::vector<double> shaped(length);
    double first = 0;
    double second = 0;
    double power = 0;
    for (double& value : shaped) {
        first += (1 - kSmoothing) * (noise(random) - first);
        second += (1 - kSmoothing) * (first - second);
        value = second;
        power += value * value;
    }
    const double gain = length > 0 && power > 0 ? kNoiseRms / std::sqrt(power / length) : 0.0;
    std::vector<int16_t> samples(std::size_t(frames) * 2);
    for (uint32_t i = 0; i < length; ++i) {
        const double fade =
            std::min({1.0, double(i) / kFadeFrames, double(length - 1 - i) / kFadeFrames});
        setFrame(samples, leadInFrames + i, gain * fade * shaped[i]);
    }
    return samples;
}

}  // namespace tunebox
