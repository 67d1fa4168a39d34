#include "effects/reverb.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "effects/effect_chain.h"
#include "effects/sample_clip.h"
#include "effects_test_support.h"

namespace tunebox {
namespace {

void reverberate(EffectControl& ctl, int16_t* block, uint32_t length) {
    reverb_process(ctl.reverb, block, length, ctl.pLeft.get(), ctl.pRight.get());
}

std::vector<float> combLineContents(const Reverb& reverb, int slot) {
    const float* line = reverb.combLine[slot].get();
    return {line, line + reverb.combLength[slot]};
}

bool allZero(const std::vector<int16_t>& samples) {
    return std::all_of(samples.begin(), samples.end(), [](int16_t s) { return s == 0; });
}

TEST(Reverb, TailRunsIntoSilentBlocksUntilTheLinesDrain) {
    EffectControl ctl = test::makeControl();
    auto silence = std::vector<int16_t>(2 * 8000, 0);
    reverberate(ctl, silence.data(), test::bytesOf(silence));
    EXPECT_TRUE(allZero(silence)) << "nothing comes out of empty lines";

    auto loud = test::stereoNoise(8000, 20000);
    reverberate(ctl, loud.data(), test::bytesOf(loud));
    std::vector<int16_t> block;
    int blocksWithTail = 0;
    for (int k = 0; k < 400; ++k) {  // about 70 seconds
        block.assign(2 * 8000, 0);
        reverberate(ctl, block.data(), test::bytesOf(block));
        if (allZero(block)) {
            break;
        }
        ++blocksWithTail;
    }
    EXPECT_GE(blocksWithTail, 10) << "the tail lasts well beyond one block";
    EXPECT_TRUE(allZero(block)) << "the tail dies away";
}

TEST(Reverb, FreezeHoldsTheLinesAndShutsTheInput) {
    EffectControl ctl = test::makeControl();
    auto loud = test::stereoNoise(4000, 20000);
    reverberate(ctl, loud.data(), test::bytesOf(loud));

    reverb_set_mode(ctl.reverb, 0.5f);
    EXPECT_EQ(ctl.reverb.gain, 0.0f);
    EXPECT_EQ(ctl.reverb.combFeedback, 1.0f);
    const auto held = combLineContents(ctl.reverb, 3);
    reverb_clear(ctl.reverb);
    auto more = test::stereoNoise(5000, 20000, 99);
    reverberate(ctl, more.data(), test::bytesOf(more));
    const auto after = combLineContents(ctl.reverb, 3);
    EXPECT_EQ(after, held) << "a frozen comb keeps what it holds and takes no input";
    EXPECT_TRUE(std::any_of(after.begin(), after.end(), [](float v) { return v != 0; }));

    reverb_set_mode(ctl.reverb, 0.0f);
    reverb_set_clear_request(ctl.reverb, 1.0f);
    const auto cleared = combLineContents(ctl.reverb, 3);
    EXPECT_TRUE(std::all_of(cleared.begin(), cleared.end(), [](float v) { return v == 0; }));
}

TEST(SampleClip, FullScaleSticksToPlusMinus32767AndTheRestTruncates) {
    const float left[] = {-40000.0f, 3.5f, -32768.0f, -1.9f};
    const float right[] = {32768.0f, -32767.9f, 32767.9f, 1.9f};
    int16_t block[8];
    EXPECT_EQ(storeClippedFrames(block, left, right, 4), 40000.0f);
    EXPECT_EQ(std::vector<int16_t>(block, block + 8),
              (std::vector<int16_t>{-32767, 32767, 3, -32767, -32767, 32767, -1, 1}));
}

}  // namespace
}  // namespace tunebox
