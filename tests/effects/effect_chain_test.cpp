#include "effects/effect_chain.h"

#include <gtest/gtest.h>

#include "effects_test_support.h"

namespace tunebox {
namespace {

TEST(EffectChain, ReturnsTheLargerPeakOfEqualiserAndReverb) {
    EffectControl ctl = test::makeControl();
    const auto input = test::stereoNoise(4000, 20000);
    auto block = input;
    const float equaliserOnly = fltEffectChain(ctl, block.data(), test::bytesOf(block));
    EXPECT_EQ(block, input);
    EXPECT_LE(equaliserOnly, 20000.0f);
    EXPECT_GE(equaliserOnly, 19000.0f);

    // The centre-removal output never counts towards the peak.
    ctl.centreRemovalFlag = 1;
    block = input;
    EXPECT_EQ(fltEffectChain(ctl, block.data(), test::bytesOf(block)), equaliserOnly);
    EXPECT_NE(block, input);

    ctl.centreRemovalFlag = 0;
    ctl.reverbFlag = 1;
    block = input;
    const float withReverb = fltEffectChain(ctl, block.data(), test::bytesOf(block));
    EXPECT_GE(withReverb, equaliserOnly);
    float reverbPeak = 0;
    for (uint32_t i = 0; i < 4000; ++i) {
        reverbPeak = std::max({reverbPeak, std::fabs(ctl.pLeft[i]), std::fabs(ctl.pRight[i])});
    }
    EXPECT_EQ(withReverb, std::max(reverbPeak, equaliserOnly));
}

TEST(EffectChain, RunsTheStagesInOrderOverTheBlock) {
    EffectControl ctl = test::makeControl();
    ctl.levelFlag = 1;
    ctl.level = 50;
    ctl.centreRemovalFlag = 1;
    std::vector<int16_t> block{3000, 1800};
    fltEffectChain(ctl, block.data(), test::bytesOf(block));
    // Halved first (1500, 900), then the side of that: 600 * 2/3 * 0.9335.
    EXPECT_EQ(block[0], 373);
    EXPECT_EQ(ctl.currentBlock, block.data());
}

TEST(EffectChain, AnUninitialisedRecordLeavesTheBlockAlone) {
    EffectControl ctl;
    ctl.blockSize = 64;
    ctl.reverbFlag = 1;
    std::vector<int16_t> block{-32768, 5, 6, 7};
    EXPECT_EQ(fltEffectChain(ctl, block.data(), test::bytesOf(block)), 0.0f);
    EXPECT_EQ(block, (std::vector<int16_t>{-32768, 5, 6, 7}));
}

TEST(EffectChain, NeverWorksPastTheBlockSize) {
    EffectControl ctl = test::makeControl(test::flatBands(), 16);
    std::vector<int16_t> block(16, -32768);
    fltEffectChain(ctl, block.data(), test::bytesOf(block));
    EXPECT_EQ(std::count(block.begin(), block.end(), -32767), 8);
    EXPECT_EQ(std::count(block.begin(), block.end(), -32768), 8);
}

}  // namespace
}  // namespace tunebox
