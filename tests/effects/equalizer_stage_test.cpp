#include "effects/equalizer_stage.h"

#include <gtest/gtest.h>

#include <cmath>

#include "effects_test_support.h"
#include "support/log_records.h"

namespace tunebox {
namespace {

using test::kRate;

void equalize(EffectControl& ctl, int16_t* block, uint32_t length) {
    fltEqualizerStage(ctl, block, length);
}

// A centre above half the sample rate is heard at its mirror image, where
// the band has the same response.
double audibleCentre(int band) {
    const double centre = kBandBaseFrequencies[band] * kBandCentreRatio;
    return centre < kRate / 2.0 ? centre : kRate - centre;
}

// Gain in dB of a sine at band `band`'s centre through the stage, measured
// on the settled second half of a two-second tone.
double measuredCentreGainDb(const BandValues& values, int band) {
    constexpr double kAmplitude = 4000;
    EffectControl ctl = test::makeControl(values);
    ctl.equaliserFlag = 1;
    auto samples = test::stereoSine(audibleCentre(band), kAmplitude, 2 * kRate);
    test::processInBlocks(ctl, samples, {kEngineBlockBytes / 4}, equalize);
    int peak = 0;
    for (std::size_t i = samples.size() / 2; i < samples.size(); ++i) {
        peak = std::max(peak, std::abs(static_cast<int>(samples[i])));
    }
    return 20.0 * std::log10(peak / kAmplitude);
}

TEST(EqualizerStage, GainAtEachCentreMatchesTheBandValue) {
    for (int value : {0, 8, kFlatBandValue, 40, 48}) {
        const double designedDb = (kFlatBandValue - value) * 0.625;
        const double tolerance = value == kFlatBandValue ? 0.01 : 0.1;
        for (int band = 0; band < kBandCount; ++band) {
            BandValues values = test::flatBands();
            values[band] = value;
            EXPECT_NEAR(measuredCentreGainDb(values, band), designedDb, tolerance)
                << "band " << band << " value " << value;
        }
    }
}

TEST(EqualizerStage, StateCarriesAcrossBlockBorders) {
    const BandValues values{0, 10, 30, 48, 5, 40, 24, 12, 36, 2};
    const auto input = test::stereoNoise(20000, 9000);
    auto whole = input;
    auto pieces = input;
    EffectControl one = test::makeControl(values);
    EffectControl split = test::makeControl(values);
    for (EffectControl* ctl : {&one, &split}) {
        ctl->equaliserFlag = 1;
        ctl->levelFlag = 1;
        ctl->level = 80;
    }
    test::processInBlocks(one, whole, {20000}, equalize);
    test::processInBlocks(split, pieces, {1, 7, 4096, 3, 9, 10, 11, 2000, 0}, equalize);
    EXPECT_EQ(whole, pieces);
}

TEST(EqualizerStage, WithEverythingOffOnlyTheMostNegativeSampleChanges) {
    EffectControl ctl = test::makeControl();
    std::vector<int16_t> block{-32768, 32767, 0, -1, 12345, -32767};
    const float peak = fltEqualizerStage(ctl, block.data(), test::bytesOf(block));
    EXPECT_EQ(block, (std::vector<int16_t>{-32767, 32767, 0, -1, 12345, -32767}));
    EXPECT_EQ(peak, 32768.0f);
}

TEST(EqualizerStage, LevelScalesAndTruncatesTowardZero) {
    EffectControl ctl = test::makeControl();
    ctl.levelFlag = 1;
    ctl.level = 50;
    std::vector<int16_t> block{1001, -1001, 32767, -32768};
    fltEqualizerStage(ctl, block.data(), test::bytesOf(block));
    EXPECT_EQ(block, (std::vector<int16_t>{500, -500, 16383, -16384}));
}

TEST(EqualizerStage, EnvelopeFadesAndSilencesItsExactBoundaries) {
    EffectControl ctl = test::makeControl();
    ctl.playRange = {0, 1000, 2000, 10000, 9000, 0, 12000, 1};
    std::vector<int16_t> block(2 * 3500, 10000);
    fltEqualizerStage(ctl, block.data(), test::bytesOf(block));
    auto leftAtByte = [&block](uint32_t position) { return block[2 * (position / 4)]; };
    EXPECT_EQ(leftAtByte(1500), 5000);
    EXPECT_EQ(leftAtByte(9500), 5000);
    EXPECT_EQ(leftAtByte(5000), 10000);
    for (uint32_t silent : {0u, 996u, 1000u, 2000u, 9000u, 10000u, 11000u, 13996u}) {
        EXPECT_EQ(leftAtByte(silent), 0) << silent;
    }
    EXPECT_EQ(block[2 * (1500 / 4) + 1], 5000);

    // The block position moves the whole envelope, and the range start also
    // silences a fade that has begun.
    ctl.playRange[kRangeStart] = 1600;
    ctl.playRange[kBlockPosition] = 1000;
    std::vector<int16_t> moved(2 * 500, 10000);
    fltEqualizerStage(ctl, moved.data(), test::bytesOf(moved));
    EXPECT_EQ(moved[2 * (500 / 4)], 0);     // byte 1500: before the range start
    EXPECT_EQ(moved[2 * (800 / 4)], 8000);  // byte 1800
}

TEST(EqualizerInit, SecondInitChangesNothing) {
    EffectControl ctl = test::makeControl();
    const float* arrays = ctl.pLeft.get();
    BandValues boosted;
    boosted.fill(0);
    EXPECT_EQ(fltEqualizerInit(ctl, boosted, kRate), 1);
    EXPECT_EQ(ctl.pLeft.get(), arrays);
    EXPECT_EQ(ctl.bands[3].gain, 1.0f);
    fltEqualizerFree(ctl);
    EXPECT_EQ(ctl.initialised, 0);
    EXPECT_EQ(ctl.pLeft, nullptr);
    EXPECT_FALSE(reverb_ready(ctl.reverb));
}

TEST(EqualizerInit, EachFailedAllocationIsLoggedAndLeavesTheRecordUnusable) {
    const std::pair<long, const char*> failures[] = {
        {0, "fltEqualizerInit:ctl->pLeft"},
        {1, "fltEqualizerInit:ctl->pLeftResult"},
        {2, "fltEqualizerInit:ctl->pRight"},
        {3, "fltEqualizerInit:ctl->pRightResult"},
        {4, "fltEqualizerInit:ctl->pCurReverbLeft"},
        {5, "fltEqualizerInit:ctl->pCurReverbRight"},
        {6, "reverb_init:x_bufcombL"},
        {7, "reverb_init:x_bufcombR"},
        {6 + 2 * kCombsUsed, "reverb_init:x_bufallpassL"},
        {7 + 2 * kCombsUsed, "reverb_init:x_bufallpassL"},  // the right line's report too
    };
    for (const auto& [succeeding, message] : failures) {
        const test::LogDirectory log;
        EffectControl ctl;
        ctl.blockSize = 4096;
        heapFailAfter(succeeding);
        EXPECT_EQ(fltEqualizerInit(ctl, test::flatBands(), kRate), 0);
        heapFailAfter(-1);
        EXPECT_EQ(ctl.initialised, 0);
        EXPECT_EQ(ctl.pLeft, nullptr);
        EXPECT_EQ(log.messages(), std::vector<std::string>{std::string("ﾒﾓﾘ確保失敗:") + message});
        std::vector<int16_t> block(100, 7);
        EXPECT_EQ(fltEqualizerStage(ctl, block.data(), test::bytesOf(block)), 0.0f);
        EXPECT_EQ(block, std::vector<int16_t>(100, 7));
    }
}

}  // namespace
}  // namespace tunebox
