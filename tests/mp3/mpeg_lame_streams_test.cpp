// Streams made by lame from synthesised signals, at every MPEG version and
// channel mode, decoded and compared with libmpg123's decode of the same file.

#include <gtest/gtest.h>

#include <string>

#include "mp3/decoder/mpeg_audio_decoder.h"
#include "pcm_comparison.h"
#include "support/mpg123_reference.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

struct LameCase {
    const char* name;
    int rate;
    int channels;
    const char* lameOptions;
};

// A sweep on the left and pink noise on the right give the encoder tonal and
// noisy material, and the chirp at the end forces block switching.
constexpr const char* kMaterial =
    "synth 2 sine 60-9000 pinknoise vol 0.4 : synth 0.4 square 440 pinknoise fade 0 0.4 0.35 "
    "vol 0.6";

// Decodes `stream` with the built-in decoder and with libmpg123 and
// compares the two over their whole, equal length.
test::PcmDifference compareWithLibmpg123(const std::vector<uint8_t>& stream, const char* name) {
    const test::Mpg123Output reference = test::decodeWithMpg123(stream);
    EXPECT_FALSE(reference.samples.empty());

    MpegAudioDecoder decoder;
    std::vector<int16_t> decoded;
    EXPECT_GT(decoder.decodeStream(stream, decoded), 0u);
    const MpegOutputDescription output = describeOutput(decoder.lastHeader());
    EXPECT_EQ(output.sampleRate, reference.rate);
    EXPECT_EQ(output.channels, reference.channels);
    EXPECT_EQ(decoded.size(), reference.samples.size());
    const test::PcmDifference difference = test::comparePcm(decoded, reference.samples);
    std::printf("%-16s compared %zu samples: max %d LSB, rms %.4f LSB\n", name, difference.compared,
                difference.maxDifference, difference.rms);
    return difference;
}

class LameStream : public ::testing::TestWithParam<LameCase> {};

TEST_P(LameStream, MatchesLibmpg123WithinOneLsb) {
    const LameCase& c = GetParam();
    const test::TempDir dir;
    const auto stream = test::readBytes(test::synthesiseMp3(
        dir / "stream.mp3", c.rate, c.channels, kMaterial, std::string("-t ") + c.lameOptions));
    const test::PcmDifference difference = compareWithLibmpg123(stream, c.name);
    EXPECT_LE(difference.maxDifference, 1);
    EXPECT_LE(difference.rms, 0.05);
}

// A full-scale tone keeps every stage near its largest values, where float
// rounding in the transforms shows first as 1 LSB differences. Both
// decoders round on their own, so the bound sits above their common floor.
TEST(LameStream, FullScaleSineMatchesLibmpg123) {
    const test::TempDir dir;
    const auto stream = test::readBytes(
        test::synthesiseMp3(dir / "sine.mp3", 44100, 1, "synth 5 sine 1000 vol 1.0", "-t -b 128"));
    const test::PcmDifference difference = compareWithLibmpg123(stream, "full_scale_sine");
    EXPECT_LE(difference.maxDifference, 1);
    EXPECT_LE(difference.rms, 0.065);
}

INSTANTIATE_TEST_SUITE_P(Modes, LameStream,
                         ::testing::Values(LameCase{"mpeg1_stereo", 44100, 2, "-m s -b 128"},
                                           LameCase{"mpeg1_joint", 44100, 2, "-m j -b 96"},
                                           LameCase{"mpeg1_joint_vbr_crc", 44100, 2,
                                                    "-m j -V 2 -p"},
                                           LameCase{"mpeg1_dual", 44100, 2, "-m d -b 160"},
                                           LameCase{"mpeg1_mono", 44100, 1, "-m m -b 64"},
                                           LameCase{"mpeg1_48k_320", 48000, 2, "-m j -b 320"},
                                           LameCase{"mpeg2_22k", 22050, 2, "-m j -b 64"},
                                           LameCase{"mpeg2_24k", 24000, 2, "-m s -b 80"},
                                           LameCase{"mpeg2_16k_mono", 16000, 1, "-m m -b 32"},
                                           LameCase{"mpeg25_11k", 11025, 2, "-m j -b 32"},
                                           LameCase{"mpeg25_8k", 8000, 1, "-m m -b 16"}),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tunebox
