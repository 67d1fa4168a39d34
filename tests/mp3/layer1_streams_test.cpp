// Layer I streams written bit by bit at every version, sample rate and
// channel mode, decoded whole and compared with libmpg123's decode; damage
// to a frame costs that frame and no other.

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "mp3/decoder/mpeg_audio_decoder.h"
#include "support/layer1_stream_writer.h"
#include "support/mpg123_reference.h"
#include "support/pcm_comparison.h"

namespace tunebox {
namespace {

struct Layer1Case {
    const char* name;
    test::Layer1StreamSpec spec;
};

void PrintTo(const Layer1Case& c, std::ostream* out) {
    *out << c.name;
}

test::Layer1StreamSpec spec(bool mpeg1, uint32_t rateIndex, uint32_t bitRateIndex, uint32_t mode,
                            uint32_t extension = 0, bool protect = false) {
    test::Layer1StreamSpec made;
    made.mpeg1 = mpeg1;
    made.sampleRateIndex = rateIndex;
    made.bitRateIndex = bitRateIndex;
    made.channelMode = mode;
    made.modeExtension = extension;
    made.protect = protect;
    made.seed = rateIndex * 1000 + bitRateIndex * 10 + mode + extension * 100;
    return made;
}

class Layer1Stream : public ::testing::TestWithParam<Layer1Case> {};

TEST_P(Layer1Stream, MatchesLibmpg123WithinOneLsbAtEveryRateReduction) {
    const test::Layer1StreamSpec& made = GetParam().spec;
    const auto stream = test::layer1Stream(made);
    for (int reduction = 0; reduction <= 2; ++reduction) {
        SCOPED_TRACE(reduction);
        MpegAudioDecoder decoder;
        decoder.configure({.reduction = reduction});
        std::vector<int16_t> decoded;
        EXPECT_EQ(decoder.decodeStream(stream, decoded), static_cast<std::size_t>(made.frames));
        EXPECT_EQ(decoder.crcMismatches(), 0u);
        const MpegOutputDescription& output = decoder.lastSetup().description;
        if (output.sampleRate < 8000) {
            continue;  // below the lowest rate libmpg123 writes
        }
        const test::Mpg123Output reference = test::decodeWithMpg123(stream, reduction);
        ASSERT_FALSE(reference.samples.empty());
        EXPECT_EQ(output.sampleRate, reference.rate);
        EXPECT_EQ(output.channels, reference.channels);
        EXPECT_EQ(output.samplesPerFrame, 384u >> reduction);
        EXPECT_EQ(decoded.size(), reference.samples.size());
        const test::PcmDifference difference = test::comparePcm(decoded, reference.samples);
        std::printf("%-22s 1/%d rate: %zu samples, max %d LSB, rms %.4f LSB\n", GetParam().name,
                    1 << reduction, difference.compared, difference.maxDifference, difference.rms);
        EXPECT_LE(difference.maxDifference, 1);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Writer, Layer1Stream,
    ::testing::Values(Layer1Case{"mpeg1_44k_stereo", spec(true, 0, 14, 0)},
                      Layer1Case{"mpeg1_44k_joint4_crc", spec(true, 0, 12, 1, 0, true)},
                      Layer1Case{"mpeg1_48k_joint8", spec(true, 1, 10, 1, 1)},
                      Layer1Case{"mpeg1_32k_joint12_crc", spec(true, 2, 9, 1, 2, true)},
                      Layer1Case{"mpeg1_44k_joint16", spec(true, 0, 8, 1, 3)},
                      Layer1Case{"mpeg1_32k_dual", spec(true, 2, 13, 2)},
                      Layer1Case{"mpeg1_48k_mono_crc", spec(true, 1, 6, 3, 0, true)},
                      Layer1Case{"mpeg1_44k_mono_lowest", spec(true, 0, 1, 3)},
                      Layer1Case{"mpeg2_22k_stereo", spec(false, 0, 14, 0)},
                      Layer1Case{"mpeg2_24k_joint8_crc", spec(false, 1, 12, 1, 1, true)},
                      Layer1Case{"mpeg2_16k_mono", spec(false, 2, 5, 3)}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Layer1Damage, ClippingLoudFramesStayWithinOneLsb) {
    test::Layer1StreamSpec loud = spec(true, 0, 14, 0);
    loud.loudestScaleFactor = 0;
    const auto stream = test::layer1Stream(loud);
    MpegAudioDecoder decoder;
    std::vector<int16_t> decoded;
    decoder.decodeStream(stream, decoded);
    const auto reference = test::decodeWithMpg123(stream);
    ASSERT_EQ(decoded.size(), reference.samples.size());
    EXPECT_LE(test::comparePcm(decoded, reference.samples).maxDifference, 1);
}

// Frame 5 of a protected mono stream at 192 kbit/s and 48 kHz: 192 bytes,
// no padding, so it starts at byte 960.
constexpr std::size_t kDamagedFrame = 5 * 192;

TEST(Layer1Damage, FlippedHeaderBitFailsTheCheckButTheFrameStillDecodes) {
    auto stream = test::layer1Stream(spec(true, 1, 6, 3, 0, true));
    const auto reference = test::decodeWithMpg123(stream);
    stream[kDamagedFrame + 3] ^= 0x08;  // the copyright bit
    MpegAudioDecoder decoder;
    std::vector<int16_t> decoded;
    EXPECT_EQ(decoder.decodeStream(stream, decoded), 200u);
    EXPECT_EQ(decoder.crcMismatches(), 1u);
    ASSERT_EQ(decoded.size(), reference.samples.size());
    EXPECT_LE(test::comparePcm(decoded, reference.samples).maxDifference, 1);
}

TEST(Layer1Damage, ForbiddenAllocationLosesThatFrameOnly) {
    auto stream = test::layer1Stream(spec(true, 1, 6, 3, 0, true));
    stream[kDamagedFrame + 6] |= 0xF0;  // after header and check word: subband 0
    MpegAudioDecoder decoder;
    std::vector<int16_t> decoded;
    EXPECT_EQ(decoder.decodeStream(stream, decoded), 199u);
    EXPECT_EQ(decoded.size(), 199u * 384);
}

}  // namespace
}  // namespace tunebox
