#include "core/playback_clock.h"

#include <gtest/gtest.h>

#include "core/wave_format.h"

namespace tunebox {
namespace {

constexpr uint32_t kSecond = kNativeBytesPerSecond;

void expectTime(const ClockTime& time, uint32_t minutes, uint32_t seconds, uint32_t frames) {
    EXPECT_EQ(time.minutes, minutes);
    EXPECT_EQ(time.seconds, seconds);
    EXPECT_EQ(time.frames, frames);
}

// The seconds round while the frames truncate: half a second past 1:01 reads
// 01:02:37, just short of it 01:01:37.
TEST(PlaybackClock, SecondsRoundWhileFramesTruncate) {
    expectTime(clockTime(0, 61 * kSecond + kSecond / 2, kSecond, 0), 1, 2, 37);
    expectTime(clockTime(60 * kSecond, kSecond + kSecond / 2 - 4, kSecond, 0), 1, 1, 37);
    expectTime(clockTime(kSecond, 0, kSecond, 3), 0, 4, 0);
    expectTime(clockTime(0, kSecond - 4, kSecond, 0), 0, 1, 74);
}

// Device seconds are truncated before the run start is added and the sum
// rounded: 1.99 s played from 3.57 s counts as 5 s, half of a 10 s file.
TEST(PlaybackClock, TheSliderCountsWholeDeviceSecondsFromTheRunStart) {
    const uint32_t length = 10 * kSecond;
    EXPECT_EQ(sliderPosition(3 * kSecond + 100000, 2 * kSecond - 4, kSecond, 0, length), 5000u);
    EXPECT_EQ(sliderPosition(0, 0, kSecond, 0, length), 0u);
    EXPECT_EQ(sliderPosition(0, kSecond - 4, kSecond, 0, length), 0u);
    EXPECT_EQ(sliderPosition(kSecond / 2, 0, kSecond, 0, length), 1000u);
    EXPECT_EQ(sliderPosition(0, 10 * kSecond, kSecond, 0, length), 10000u);
    EXPECT_EQ(sliderPosition(kSecond, kSecond, kSecond, 0, 0), 0u);
    // Hours played over a four-byte source stop at the largest count.
    EXPECT_EQ(sliderPosition(0, 3600u * kSecond, kSecond, 0, 4), UINT32_MAX);
}

TEST(PlaybackClock, PositionsOffAFrameMoveOnByTheirLowBits) {
    EXPECT_EQ(adjustStartPosition(1), 2u);
    EXPECT_EQ(adjustStartPosition(2), 4u);
    EXPECT_EQ(adjustStartPosition(3), 6u);
    EXPECT_EQ(adjustStartPosition(4), 4u);
    EXPECT_EQ(adjustStartPosition(5), 6u);
    EXPECT_EQ(sliderToPosition(5000, 1000001), 500002u);  // 500,001 rounded, then moved on
    EXPECT_EQ(sliderToPosition(10000, 1000), 1000u);
}

}  // namespace
}  // namespace tunebox
