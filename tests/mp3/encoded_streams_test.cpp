// Layer II and Layer III streams made by ffmpeg, twolame and lame from
// synthesised signals, at every MPEG version, sample rate and channel mode,
// decoded whole and compared with libmpg123's decode of the same stream.

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "mp3/decoder/mpeg_audio_decoder.h"
#include "support/mpg123_reference.h"
#include "support/pcm_comparison.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

// Tones, a sweep and noise: every Layer II quantiser class from 3 levels up,
// and silence at the start that the lowest scale factors code.
constexpr const char* kLayer2Material =
    "synth 1.5 sine 60-12000 pinknoise vol 0.5 : synth 0.5 square 330 whitenoise vol 0.9 : "
    "synth 0.3 sine 1000 vol 0.001";
// A sweep on the left and pink noise on the right give the encoder tonal and
// noisy material, and the chirp at the end forces block switching.
constexpr const char* kLayer3Material =
    "synth 2 sine 60-9000 pinknoise vol 0.4 : synth 0.4 square 440 pinknoise fade 0 0.4 0.35 "
    "vol 0.6";
// A full-scale tone keeps every stage near its largest values, where float
// rounding in the transforms shows first as 1 LSB differences. Both
// decoders round on their own, so its bound sits above their common floor.
constexpr const char* kFullScaleSine = "synth 5 sine 1000 vol 1.0";

enum class Encoder { lame, twolame, ffmpeg };

struct EncodedCase {
    const char* name;
    int rate;
    int channels;
    Encoder encoder;
    const char* options;  // the encoder's, for rate and mode
    const char* material = kLayer3Material;
    double rmsBound = 0.05;
};

void PrintTo(const EncodedCase& c, std::ostream* out) {
    *out << c.name;
}

// Layer II is held to its 1 LSB bound alone.
constexpr double kNoRmsBound = 1.0;

std::string encode(const EncodedCase& c, const test::TempDir& dir) {
    const std::string wav = test::synthesise(dir / "source.wav", c.rate, c.channels, c.material);
    const std::string out = (dir / "stream").string();
    const std::string options = c.options;
    switch (c.encoder) {
        case Encoder::lame:
            test::runTool("lame --quiet -t " + options + " '" + wav + "' '" + out + "'");
            break;
        case Encoder::twolame:
            test::runTool("twolame --quiet " + options + " '" + wav + "' '" + out + "'");
            break;
        case Encoder::ffmpeg:
            test::runTool("ffmpeg -y -i '" + wav + "' -c:a mp2 " + options + " -f mp2 '" + out +
                          "'");
            break;
    }
    return out;
}

class EncodedStream : public ::testing::TestWithParam<EncodedCase> {};

TEST_P(EncodedStream, MatchesLibmpg123WithinOneLsb) {
    const EncodedCase& c = GetParam();
    const test::TempDir dir;
    const auto stream = test::readBytes(encode(c, dir));
    const test::Mpg123Output reference = test::decodeWithMpg123(stream);
    ASSERT_FALSE(reference.samples.empty());

    MpegAudioDecoder decoder;
    std::vector<int16_t> decoded;
    ASSERT_GT(decoder.decodeStream(stream, decoded), 0u);
    const MpegOutputDescription output = describeOutput(decoder.lastHeader());
    EXPECT_EQ(output.sampleRate, reference.rate);
    EXPECT_EQ(output.channels, reference.channels);
    EXPECT_EQ(decoded.size(), reference.samples.size());
    const test::PcmDifference difference = test::comparePcm(decoded, reference.samples);
    std::printf("%-22s compared %zu samples: max %d LSB, rms %.4f LSB\n", c.name,
                difference.compared, difference.maxDifference, difference.rms);
    EXPECT_LE(difference.maxDifference, 1);
    EXPECT_LE(difference.rms, c.rmsBound);
}

constexpr Encoder kLame = Encoder::lame;
constexpr Encoder kTwolame = Encoder::twolame;
constexpr Encoder kFfmpeg = Encoder::ffmpeg;
constexpr const char* kL2 = kLayer2Material;

INSTANTIATE_TEST_SUITE_P(
    Layer3, EncodedStream,
    ::testing::Values(EncodedCase{"mpeg1_stereo", 44100, 2, kLame, "-m s -b 128"},
                      EncodedCase{"mpeg1_joint", 44100, 2, kLame, "-m j -b 96"},
                      EncodedCase{"mpeg1_joint_vbr_crc", 44100, 2, kLame, "-m j -V 2 -p"},
                      EncodedCase{"mpeg1_dual", 44100, 2, kLame, "-m d -b 160"},
                      EncodedCase{"mpeg1_mono", 44100, 1, kLame, "-m m -b 64"},
                      EncodedCase{"mpeg1_48k_320", 48000, 2, kLame, "-m j -b 320"},
                      EncodedCase{"mpeg2_22k", 22050, 2, kLame, "-m j -b 64"},
                      EncodedCase{"mpeg2_24k", 24000, 2, kLame, "-m s -b 80"},
                      EncodedCase{"mpeg2_16k_mono", 16000, 1, kLame, "-m m -b 32"},
                      EncodedCase{"mpeg25_11k", 11025, 2, kLame, "-m j -b 32"},
                      EncodedCase{"mpeg25_8k", 8000, 1, kLame, "-m m -b 16"},
                      EncodedCase{"full_scale_sine", 44100, 1, kLame, "-b 128", kFullScaleSine,
                                  0.065}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Layer2, EncodedStream,
    ::testing::Values(
        EncodedCase{"ffmpeg_44k_stereo", 44100, 2, kFfmpeg, "-b:a 192k", kL2, kNoRmsBound},
        EncodedCase{"ffmpeg_44k_low", 44100, 2, kFfmpeg, "-b:a 64k", kL2, kNoRmsBound},
        EncodedCase{"ffmpeg_48k_mono", 48000, 1, kFfmpeg, "-b:a 96k", kL2, kNoRmsBound},
        EncodedCase{"ffmpeg_32k_stereo", 32000, 2, kFfmpeg, "-b:a 256k", kL2, kNoRmsBound},
        EncodedCase{"ffmpeg_32k_low", 32000, 1, kFfmpeg, "-b:a 48k", kL2, kNoRmsBound},
        EncodedCase{"ffmpeg_22k_stereo", 22050, 2, kFfmpeg, "-b:a 64k", kL2, kNoRmsBound},
        EncodedCase{"ffmpeg_24k_mono", 24000, 1, kFfmpeg, "-b:a 32k", kL2, kNoRmsBound},
        EncodedCase{"ffmpeg_16k_stereo", 16000, 2, kFfmpeg, "-b:a 96k", kL2, kNoRmsBound},
        EncodedCase{"twolame_44k_joint", 44100, 2, kTwolame, "-m j -b 128 -d", kL2, kNoRmsBound},
        EncodedCase{"twolame_48k_stereo_crc", 48000, 2, kTwolame, "-m s -b 384 -p", kL2,
                    kNoRmsBound},
        EncodedCase{"twolame_32k_dual", 32000, 2, kTwolame, "-m d -b 112", kL2, kNoRmsBound},
        EncodedCase{"twolame_44k_mono", 44100, 1, kTwolame, "-m m -b 56", kL2, kNoRmsBound},
        EncodedCase{"twolame_22k_joint", 22050, 2, kTwolame, "-m j -b 80", kL2, kNoRmsBound},
        EncodedCase{"twolame_16k_mono", 16000, 1, kTwolame, "-m m -b 8", kL2, kNoRmsBound}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tunebox
