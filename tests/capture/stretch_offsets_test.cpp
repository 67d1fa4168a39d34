#include "capture/stretch_offsets.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "capture/measurement_signal.h"
#include "capture/offset_finder.h"

namespace tunebox {
namespace {

constexpr int64_t kDelay = 2646;  // 60 ms
constexpr double kWander = 4.0;   // the return path drifts 0 to 8 samples late, once a second

// The reference as a return path on its own clock hands it back: late by
// kDelay plus a slow wander (a resampler chasing another clock), quieter, and
// with noise.
std::vector<float> driftingCopy(const std::vector<float>& reference, std::size_t length) {
    std::vector<float> captured(length);
    std::mt19937 random(11);
    std::normal_distribution<float> noise(0.0f, 0.005f);
    for (std::size_t k = 0; k < length; ++k) {
        const double wander = kWander * (1 - std::cos(2 * std::numbers::pi * double(k) / 44100));
        const double at = double(k) - double(kDelay) - wander;
        const auto whole = static_cast<int64_t>(std::floor(at));
        const double part = at - double(whole);
        float value = 0;
        if (whole >= 0 && whole + 1 < int64_t(reference.size())) {
            value = float((1 - part) * reference[whole] + part * reference[whole + 1]);
        }
        captured[k] = 0.6f * value + noise(random);
    }
    return captured;
}

TEST(StretchOffsets, FollowADriftingReturnPathThroughNoiseAndShowItsSpread) {
    const auto reference = leftChannel(measurementNoise(2 * 44100, 4410));
    const auto captured = driftingCopy(reference, 3 * 44100);
    const StretchOffsets found = findStretchOffsets(reference, captured, -44100, 88200, 4410);
    ASSERT_TRUE(found.found) << found.reason;
    EXPECT_EQ(found.stretches, 19);  // the lead-in holds no signal
    EXPECT_EQ(found.stretchesFound, found.stretches);
    EXPECT_GE(found.offsetFrames, kDelay);
    EXPECT_LE(found.offsetFrames, kDelay + 2 * int64_t(kWander));
    EXPECT_GE(found.latestFrames - found.earliestFrames, int64_t(kWander));
    EXPECT_LE(found.latestFrames - found.earliestFrames, 2 * int64_t(kWander) + 2);
}

TEST(StretchOffsets, SilenceAndForeignNoiseAreNotFound) {
    const auto reference = leftChannel(measurementNoise(44100, 0));
    StretchOffsets found =
        findStretchOffsets(reference, std::vector<float>(2 * 44100), -4410, 4410, 4410);
    EXPECT_FALSE(found.found);
    EXPECT_EQ(found.reason, "the input is silent");

    std::mt19937 random(5);
    std::normal_distribution<float> noise(0.0f, 0.1f);
    std::vector<float> other(2 * 44100);
    for (float& sample : other) {
        sample = noise(random);
    }
    found = findStretchOffsets(reference, other, -4410, 4410, 4410);
    EXPECT_FALSE(found.found);
    EXPECT_NE(found.reason.find("no clear copy"), std::string::npos) << found.reason;
}

}  // namespace
}  // namespace tunebox
