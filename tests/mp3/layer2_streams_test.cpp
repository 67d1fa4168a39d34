// Layer II streams made by ffmpeg and twolame at every sample rate and
// channel mode, decoded whole and compared with libmpg123's decode.

#include <gtest/gtest.h>

#include <string>

#include "mp3/decoder/mpeg_audio_decoder.h"
#include "pcm_comparison.h"
#include "support/mpg123_reference.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

struct Layer2Case {
    const char* name;
    int rate;
    int channels;
    bool twolame;         // else ffmpeg
    const char* options;  // the encoder's, for rate and mode
};

// Tones, a sweep and noise: every quantiser class from 3 levels up, and
// silence at the start that the lowest scale factors code.
constexpr const char* kMaterial =
    "synth 1.5 sine 60-12000 pinknoise vol 0.5 : synth 0.5 square 330 whitenoise vol 0.9 : "
    "synth 0.3 sine 1000 vol 0.001";

std::string encode(const Layer2Case& c, const test::TempDir& dir) {
    const std::string wav = test::synthesise(dir / "source.wav", c.rate, c.channels, kMaterial);
    const std::string mp2 = (dir / "stream.mp2").string();
    const std::string options = c.options;
    test::runTool(c.twolame ? "twolame --quiet " + options + " '" + wav + "' '" + mp2 + "'"
                            : "ffmpeg -y -i '" + wav + "' -c:a mp2 " + options + " '" + mp2 + "'");
    return mp2;
}

class Layer2Stream : public ::testing::TestWithParam<Layer2Case> {};

TEST_P(Layer2Stream, MatchesLibmpg123WithinOneLsb) {
    const Layer2Case& c = GetParam();
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
    std::printf("%-16s compared %zu samples: max %d LSB, rms %.4f LSB\n", c.name,
                difference.compared, difference.maxDifference, difference.rms);
    EXPECT_LE(difference.maxDifference, 1);
}

INSTANTIATE_TEST_SUITE_P(
    Encoders, Layer2Stream,
    ::testing::Values(Layer2Case{"ffmpeg_44k_stereo", 44100, 2, false, "-b:a 192k"},
                      Layer2Case{"ffmpeg_44k_low", 44100, 2, false, "-b:a 64k"},
                      Layer2Case{"ffmpeg_48k_mono", 48000, 1, false, "-b:a 96k"},
                      Layer2Case{"ffmpeg_32k_stereo", 32000, 2, false, "-b:a 256k"},
                      Layer2Case{"ffmpeg_32k_low", 32000, 1, false, "-b:a 48k"},
                      Layer2Case{"ffmpeg_22k_stereo", 22050, 2, false, "-b:a 64k"},
                      Layer2Case{"ffmpeg_24k_mono", 24000, 1, false, "-b:a 32k"},
                      Layer2Case{"ffmpeg_16k_stereo", 16000, 2, false, "-b:a 96k"},
                      Layer2Case{"twolame_44k_joint", 44100, 2, true, "-m j -b 128 -d"},
                      Layer2Case{"twolame_48k_stereo_crc", 48000, 2, true, "-m s -b 384 -p"},
                      Layer2Case{"twolame_32k_dual", 32000, 2, true, "-m d -b 112"},
                      Layer2Case{"twolame_44k_mono", 44100, 1, true, "-m m -b 56"},
                      Layer2Case{"twolame_22k_joint", 22050, 2, true, "-m j -b 80"},
                      Layer2Case{"twolame_16k_mono", 16000, 1, true, "-m m -b 8"}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tunebox
