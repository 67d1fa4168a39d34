#include "capture/measurement_signal.h"

#include <cmath>
#include <random>

namespace tunebox {
namespace {

constexpr uint32_t kClickFrames = 64;
constexpr uint32_t kMinimumGap = 2205;  // 50 ms
constexpr uint32_t kGapSpread = 4410;
constexpr double kLevel = 0.5 * 32767;

}  // namespace

std::vector<int16_t> measurementClicks(uint32_t frames, uint32_t leadInFrames) {
    std::vector<int16_t> samples(std::size_t(frames) * 2);
    std::mt19937 random(20240611);  // fixed: every run plays the same track
    std::uniform_int_distribution<uint32_t> gap(0, kGapSpread);
    for (uint32_t start = leadInFrames; start + kClickFrames <= frames;
         start += kClickFrames + kMinimumGap + gap(random)) {
        // A short windowed burst of noise: broadband, so the peak is sharp.
        std::uniform_real_distribution<double> noise(-1.0, 1.0);
        for (uint32_t i = 0; i < kClickFrames; ++i) {
            const double window = std::sin(M_PI * (i + 0.5) / kClickFrames);
            const auto value = static_cast<int16_t>(kLevel * window * noise(random));
            samples[2 * std::size_t(start + i)] = value;
            samples[2 * std::size_t(start + i) + 1] = value;
        }
    }
    return samples;
}

}  // namespace tunebox
