// The normalizing gain: the target, unless the true peak would pass the
// ceiling first.
#include <gtest/gtest.h>

#include <limits>

#include "session/take_loudness.h"

namespace tunebox {
namespace {

TEST(NormalizeGainTest, TheTargetOrTheTruePeakCeilingWhicheverComesFirst) {
    const NormalizeGain quiet = normalizeGain({.integratedLufs = -20.0, .truePeakDbtp = -9.0}, -14);
    EXPECT_DOUBLE_EQ(quiet.decibels, 6.0);
    EXPECT_EQ(quiet.reason, GainReason::kReachesTarget);

    const NormalizeGain peaky = normalizeGain({.integratedLufs = -20.0, .truePeakDbtp = -4.0}, -14);
    EXPECT_DOUBLE_EQ(peaky.decibels, 3.0);
    EXPECT_EQ(peaky.reason, GainReason::kPeakLimited);

    // Lowering a loud take is never held back by its peak.
    const NormalizeGain loud = normalizeGain({.integratedLufs = -8.0, .truePeakDbtp = 0.5}, -14);
    EXPECT_DOUBLE_EQ(loud.decibels, -6.0);
    EXPECT_EQ(loud.reason, GainReason::kReachesTarget);

    const double silence = -std::numeric_limits<double>::infinity();
    const NormalizeGain none =
        normalizeGain({.integratedLufs = silence, .truePeakDbtp = silence}, -14);
    EXPECT_DOUBLE_EQ(none.decibels, 0.0);
    EXPECT_EQ(none.reason, GainReason::kUnmeasurable);
}

}  // namespace
}  // namespace tunebox
