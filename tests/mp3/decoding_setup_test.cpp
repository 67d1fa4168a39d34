// The decoder's set-up: rate reduction, channel handling, 8-bit output and
// the frequency limit, on Layer III and Layer II streams with a different tone
// per channel.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <span>
#include <string>

#include "mp3/decoder/mpeg_audio_decoder.h"
#include "support/pcm_comparison.h"
#include "support/signal_measure.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

MpegHeader headerOf(uint8_t byte1, uint8_t byte2, uint8_t byte3) {
    MpegHeader header;
    const uint8_t bytes[] = {0xFF, byte1, byte2, byte3};
    EXPECT_TRUE(mpegReadHeader(bytes, header));
    return header;
}

TEST(DecodingSetup, FiguresFollowFromReductionModeAndLimit) {
    const MpegHeader stereo44k = headerOf(0xFB, 0x90, 0x40);  // joint stereo
    DecodingSetup setup;
    // Reduction clamped to 2; one channel duplicated into two, 8 bits.
    ASSERT_EQ(mpegSetUpDecoding(stereo44k, 417, 7, 1 | kOutputMode8Bit, 24000, setup), 1);
    EXPECT_EQ(setup.reduction, 2);
    EXPECT_EQ(setup.sampleMultiplier, 2);
    EXPECT_EQ(setup.decodedSubbands, 8);
    EXPECT_EQ(setup.description.sampleRate, 11025);
    EXPECT_EQ(setup.description.channels, 2);
    EXPECT_EQ(setup.description.pcmBytesPerFrame, 288u * 2);

    ASSERT_EQ(mpegSetUpDecoding(stereo44k, 417, -3, 2, 24000, setup), 1);
    EXPECT_EQ(setup.reduction, 0);
    EXPECT_EQ(setup.description.channels, 1);

    // A limit below 1 kHz counts as 1 kHz: subbands 0 and 1 (up to 1.38 kHz).
    ASSERT_EQ(mpegSetUpDecoding(stereo44k, 417, 0, 0, 10, setup), 1);
    EXPECT_EQ(setup.decodedSubbands, 2);

    // MPEG 2.5 at 8 kHz, one channel.
    const MpegHeader mono8k = headerOf(0xE3, 0x48, 0xC0);
    ASSERT_EQ(mpegSetUpDecoding(mono8k, 208, 0, 1, 1000, setup), 1);
    EXPECT_EQ(setup.description.sampleRate, 8000);
    EXPECT_EQ(setup.description.channels, 1);  // a one-channel stream ignores the handling
    EXPECT_EQ(setup.decodedSubbands, 9);
    EXPECT_EQ(setup.description.pcmBytesPerFrame, 1152u);

    EXPECT_EQ(mpegSetUpDecoding(stereo44k, 1, 0, 0, 24000, setup), 0);
    EXPECT_EQ(mpegSetUpDecoding(headerOf(0xFB, 0x9C, 0x40), 417, 0, 0, 24000, setup), 0);

    // Layer I: 384 >> reduction samples per frame.
    ASSERT_EQ(mpegSetUpDecoding(headerOf(0xFF, 0x90, 0x40), 417, 2, 0, 24000, setup), 1);
    EXPECT_EQ(setup.description.samplesPerFrame, 96u);
    EXPECT_EQ(setup.description.pcmBytesPerFrame, 96u * 2 * 2);

    // Layer II: 1152 >> reduction samples per frame at every version.
    const MpegHeader layer2Lsf = headerOf(0xF5, 0x80, 0xC0);  // 22.05 kHz, one channel
    ASSERT_EQ(mpegSetUpDecoding(layer2Lsf, 417, 1, 0, 24000, setup), 1);
    EXPECT_EQ(setup.description.samplesPerFrame, 576u);
    EXPECT_EQ(setup.description.sampleRate, 11025);
}

constexpr double kLeftTone = 1000.0;
constexpr double kRightTone = 2500.0;

// One second of 1 kHz on the left and 2.5 kHz on the right, as 44.1 kHz
// stereo at 192 kbit/s, by lame (Layer III) and by twolame (Layer II).
class ConfiguredDecoding : public ::testing::TestWithParam<bool> {
  protected:
    static void SetUpTestSuite() {
        const test::TempDir dir;
        const std::string tones = "synth 1 sine 1000 sine 2500 vol 0.5";
        layer3_ = test::readBytes(
            test::synthesiseMp3(dir / "tones.mp3", 44100, 2, tones, "-t -m s -b 192"));
        const std::string wav = test::synthesise(dir / "tones.wav", 44100, 2, tones);
        const auto mp2 = dir / "tones.mp2";
        test::runTool("twolame --quiet -m s -b 192 '" + wav + "' '" + mp2.string() + "'");
        layer2_ = test::readBytes(mp2);
    }
    void SetUp() override { ASSERT_FALSE(stream().empty()) << "sox or the encoder failed"; }

    static const std::vector<uint8_t>& stream() { return GetParam() ? layer2_ : layer3_; }

    static std::vector<int16_t> decode16(const DecodingOptions& options, int& rate) {
        MpegAudioDecoder decoder;
        decoder.configure(options);
        std::vector<int16_t> pcm;
        decoder.decodeStream(stream(), pcm);
        rate = decoder.lastSetup().description.sampleRate;
        return pcm;
    }

    static double rms(const std::vector<int16_t>& pcm, int channels, int channel) {
        double sum = 0.0;
        std::size_t count = 0;
        for (std::size_t i = static_cast<std::size_t>(channel); i < pcm.size(); i += channels) {
            sum += double(pcm[i]) * pcm[i];
            ++count;
        }
        return count ? std::sqrt(sum / count) : 0.0;
    }

    static inline std::vector<uint8_t> layer3_;
    static inline std::vector<uint8_t> layer2_;
};

TEST_P(ConfiguredDecoding, ReductionHalvesOrQuartersTheRateAndKeepsTonesAndLevels) {
    int fullRate = 0;
    const auto full = decode16({}, fullRate);
    ASSERT_EQ(fullRate, 44100);
    for (int reduction : {1, 2}) {
        SCOPED_TRACE(reduction);
        int rate = 0;
        const auto reduced = decode16({reduction, 0, 24000}, rate);
        EXPECT_EQ(rate, 44100 >> reduction);
        EXPECT_EQ(reduced.size(), full.size() >> reduction);
        EXPECT_NEAR(test::toneFrequency(reduced, 2, 0, rate), kLeftTone, 5.0);
        EXPECT_NEAR(rms(reduced, 2, 0) / rms(full, 2, 0), 1.0, 0.05);
        EXPECT_NEAR(test::toneFrequency(reduced, 2, 1, rate), kRightTone, 20.0);
        EXPECT_NEAR(rms(reduced, 2, 1) / rms(full, 2, 1), 1.0, 0.05);
    }
}

TEST_P(ConfiguredDecoding, ReconfiguredDecoderStartsAfreshAtEachRate) {
    // At a reduced rate the filter banks leave the upper subbands alone; a
    // decoder that goes back to full rate must not pick up what they held
    // when it was left in the middle of a stream.
    const std::span<const uint8_t> firstHalf(stream().data(), stream().size() / 2);
    MpegAudioDecoder decoder;
    for (int reduction : {0, 2, 1, 0}) {
        SCOPED_TRACE(reduction);
        int rate = 0;
        const auto fresh = decode16({reduction, 0, 24000}, rate);
        decoder.configure({reduction, 0, 24000});
        std::vector<int16_t> reused;
        decoder.decodeStream(stream(), reused);
        EXPECT_TRUE(reused == fresh);
        decoder.decodeStream(firstHalf, reused);
    }
}

TEST_P(ConfiguredDecoding, ChannelHandlingsAndEightBitOutput) {
    int rate = 0;
    const auto both = decode16({}, rate);
    const auto mixed = decode16({0, 1, 24000}, rate);
    const auto left = decode16({0, 2, 24000}, rate);
    const auto right = decode16({0, 3, 24000}, rate);
    ASSERT_EQ(mixed.size(), both.size());
    ASSERT_EQ(left.size(), both.size() / 2);
    ASSERT_EQ(right.size(), both.size() / 2);
    int mixError = 0;
    for (std::size_t i = 0; i < left.size(); ++i) {
        ASSERT_EQ(left[i], both[2 * i]);
        ASSERT_EQ(right[i], both[2 * i + 1]);
        ASSERT_EQ(mixed[2 * i], mixed[2 * i + 1]);
        const int expected = (both[2 * i] + both[2 * i + 1]) / 2;
        mixError = std::max(mixError, std::abs(mixed[2 * i] - expected));
    }
    EXPECT_LE(mixError, 1);

    MpegAudioDecoder decoder;
    decoder.configure({0, kOutputMode8Bit, 24000});
    std::vector<uint8_t> eightBit;
    decoder.decodeStream(stream(), eightBit);
    EXPECT_EQ(decoder.lastSetup().description.bitsPerSample, 8);
    ASSERT_EQ(eightBit.size(), both.size());
    for (std::size_t i = 0; i < both.size(); ++i) {
        ASSERT_EQ(eightBit[i], (both[i] >> 8) + 128);
    }
}

TEST_P(ConfiguredDecoding, FrequencyLimitRemovesWhatLiesAboveIt) {
    int rate = 0;
    const auto full = decode16({}, rate);
    // 1 kHz keeps subbands 0 and 1, up to 1.38 kHz.
    const auto limited = decode16({0, 0, 1000}, rate);
    ASSERT_EQ(limited.size(), full.size());
    EXPECT_NEAR(rms(limited, 2, 0) / rms(full, 2, 0), 1.0, 0.02);
    EXPECT_LT(rms(limited, 2, 1), 0.01 * rms(full, 2, 1));
}

INSTANTIATE_TEST_SUITE_P(Layers, ConfiguredDecoding, ::testing::Bool(),
                         [](const auto& info) { return info.param ? "layer2" : "layer3"; });

}  // namespace
}  // namespace tunebox
