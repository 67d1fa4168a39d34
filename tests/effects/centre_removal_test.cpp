#include "effects/centre_removal.h"

#include <gtest/gtest.h>

#include "effects_test_support.h"

namespace tunebox {
namespace {

void removeCentre(EffectControl& ctl, int16_t* block, uint32_t length) {
    fltCentreRemoval(ctl, block, length);
}

TEST(CentreRemoval, ACentredSignalCancelsOnTheLeft) {
    EffectControl ctl = test::makeControl();
    auto block = test::stereoSine(440, 30000, 5000);
    fltCentreRemoval(ctl, block.data(), test::bytesOf(block));
    for (std::size_t i = 0; i < block.size(); i += 2) {
        ASSERT_EQ(block[i], 0) << "frame " << i / 2;
    }
}

TEST(CentreRemoval, StronglyOppositeChannelsWrapInsteadOfClipping) {
    EXPECT_EQ(centreRemovalSide(32767, -32768), 43690);
    EXPECT_EQ(centreRemovalOutput(43690), -24751);
    EXPECT_EQ(centreRemovalSide(-100, 50), -100);  // truncated toward zero

    EffectControl ctl = test::makeControl();
    std::vector<int16_t> block{32767, -32768};
    fltCentreRemoval(ctl, block.data(), 4);
    EXPECT_EQ(block[0], -24751);
}

TEST(CentreRemoval, RightChannelIsTheSideDelayedAcrossBlockBorders) {
    constexpr std::size_t kBlockFrames = 3000;
    EffectControl ctl = test::makeControl();
    const auto input = test::stereoNoise(4 * kBlockFrames, 12000);
    auto output = input;
    test::processInBlocks(ctl, output, {kBlockFrames}, removeCentre);
    auto sideAt = [&input](std::size_t frame) {
        return centreRemovalOutput(centreRemovalSide(input[2 * frame], input[2 * frame + 1]));
    };
    for (std::size_t frame = 0; frame < input.size() / 2; ++frame) {
        ASSERT_EQ(output[2 * frame], sideAt(frame)) << frame;
        const int16_t expectedRight = frame < 2000 ? 0 : sideAt(frame - 2000);
        ASSERT_EQ(output[2 * frame + 1], expectedRight) << frame;
    }
}

TEST(CentreRemoval, BlocksShorterThanTheDelayStayInBounds) {
    EffectControl ctl = test::makeControl();
    auto block = test::stereoNoise(500, 12000);
    test::processInBlocks(ctl, block, {500}, removeCentre);
    for (std::size_t i = 1; i < block.size(); i += 2) {
        EXPECT_EQ(block[i], 0);
    }
}

}  // namespace
}  // namespace tunebox
