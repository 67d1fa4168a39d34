#include "playback/wav_refusal.h"

#include <gtest/gtest.h>

namespace tunebox {
namespace {

TEST(WavRefusal, ThePathDecidesFirstThenHowFarTheReaderGot) {
    EXPECT_EQ(classifyRefusal(PathKind::missing, WavOpenStatus::cannotOpen), WavRefusal::missing);
    EXPECT_EQ(classifyRefusal(PathKind::directory, WavOpenStatus::cannotOpen),
              WavRefusal::directory);
    EXPECT_EQ(classifyRefusal(PathKind::other, WavOpenStatus::cannotOpen), WavRefusal::notReadable);
    EXPECT_EQ(classifyRefusal(PathKind::other, WavOpenStatus::notWave), WavRefusal::notWave);
    EXPECT_EQ(classifyRefusal(PathKind::other, WavOpenStatus::damaged), WavRefusal::damaged);
    EXPECT_EQ(classifyRefusal(PathKind::other, WavOpenStatus::unsupported),
              WavRefusal::unsupportedFormat);
    EXPECT_EQ(classifyRefusal(PathKind::other, WavOpenStatus::opened), WavRefusal::none);
}

}  // namespace
}  // namespace tunebox
