#include <gtest/gtest.h>

#include "session/position_time.h"

namespace tunebox {
namespace {

TEST(PositionTime, ShowsMinutesSecondsAndHundredthsAndMinutesWrapAfter255) {
    EXPECT_EQ(formatPositionTime(11536560), "01:05:40");  // 4905 sectors
    EXPECT_EQ(formatPositionTime(2351), "00:00:00");
    EXPECT_EQ(formatPositionTime(74 * 2352), "00:00:99");
    const uint32_t minute = 4500 * 2352;
    EXPECT_EQ(formatPositionTime(255 * minute), "255:00:00");
    EXPECT_EQ(formatPositionTime(256 * minute + 75 * 2352), "00:01:00");
}

TEST(PositionTime, TrackbarValueRoundsToTheNearestByte) {
    EXPECT_EQ(trackbarToBytes(0, 1000), 0u);
    EXPECT_EQ(trackbarToBytes(10000, 4000000000u), 4000000000u);
    EXPECT_EQ(trackbarToBytes(5, 1000), 1u);  // 0.5 rounds up
    EXPECT_EQ(trackbarToBytes(4, 1000), 0u);
}

}  // namespace
}  // namespace tunebox
