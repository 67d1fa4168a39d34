#include "session/demo_tune.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tunebox {
namespace {

TEST(DemoTune, EightSecondsOfStereoThatIsAudibleUnclippedAndStartsAndEndsQuietly) {
    const std::vector<int16_t> samples = synthesiseDemoTune();
    ASSERT_EQ(samples.size(), 8u * 44100 * 2);

    int peak = 0;
    double leftEnergy = 0.0;
    double rightEnergy = 0.0;
    for (std::size_t i = 0; i < samples.size(); i += 2) {
        peak = std::max({peak, std::abs(int{samples[i]}), std::abs(int{samples[i + 1]})});
        leftEnergy += static_cast<double>(samples[i]) * samples[i];
        rightEnergy += static_cast<double>(samples[i + 1]) * samples[i + 1];
    }
    EXPECT_GT(peak, 16000);
    EXPECT_LT(peak, 32000);
    EXPECT_GT(std::sqrt(leftEnergy / (samples.size() / 2)), 2000.0);
    EXPECT_GT(std::sqrt(rightEnergy / (samples.size() / 2)), 2000.0);
    // No click at either end: the notes fade in and out.
    EXPECT_EQ(samples.front(), 0);
    EXPECT_LT(std::abs(int{samples.back()}), 200);
}

}  // namespace
}  // namespace tunebox
