#include "capture/offset_finder.h"

#include <gtest/gtest.h>

#include <random>

#include "capture/measurement_signal.h"

namespace tunebox {
namespace {

std::vector<float> withNoise(std::vector<float> samples, float level, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<float> noise(0.0f, level);
    for (float& sample : samples) {
        sample += noise(random);
    }
    return samples;
}

// The reference placed at `offset` inside a recording of `length` frames.
std::vector<float> recordingWith(const std::vector<float>& reference, int64_t offset,
                                 std::size_t length) {
    std::vector<float> recording(length);
    for (std::size_t i = 0; i < reference.size(); ++i) {
        const int64_t at = int64_t(i) + offset;
        if (at >= 0 && at < int64_t(length)) {
            recording[std::size_t(at)] = reference[i] * 0.7f;
        }
    }
    return recording;
}

TEST(OffsetFinder, FindsPositiveAndNegativeOffsetsToTheSampleThroughNoise) {
    const auto reference = leftChannel(measurementClicks(44100, 1000));
    for (const int64_t offset : {0, 1, 12345, -551, -999}) {
        const auto recording = withNoise(recordingWith(reference, offset, 60000), 0.02f, 7);
        const auto search = findOffset(reference, recording, -22050, 22050);
        ASSERT_TRUE(search.found) << offset << ": " << search.reason;
        EXPECT_EQ(search.offsetFrames, offset);
    }
}

TEST(OffsetFinder, SilenceClippingAndNoiseAreReportedAsNoSignal) {
    const auto reference = leftChannel(measurementClicks(44100, 1000));
    const std::vector<float> silence(50000);
    auto search = findOffset(reference, silence, -1000, 1000);
    EXPECT_FALSE(search.found);
    EXPECT_EQ(search.reason, "the input is silent");

    std::vector<float> clipped = recordingWith(reference, 10, 50000);
    for (float& sample : clipped) {
        sample = sample > 0.01f ? 1.0f : sample < -0.01f ? -1.0f : sample;
    }
    search = findOffset(reference, clipped, -1000, 1000);
    EXPECT_FALSE(search.found);
    EXPECT_EQ(search.reason, "the input is clipping");

    search = findOffset(reference, withNoise(std::vector<float>(50000), 0.1f, 3), -1000, 1000);
    EXPECT_FALSE(search.found);
    EXPECT_NE(search.reason.find("noise"), std::string::npos);
}

}  // namespace
}  // namespace tunebox
