// lame's VBR streams at every quality, the rates of all three MPEG versions,
// mono and stereo, read through the built-in decoder's feed as the player
// reads them, against libmpg123's gapless decode of the same file: the same
// length, the same start, every sample within 1 LSB.

#include <gtest/gtest.h>

#include <string>

#include "support/mpg123_reference.h"
#include "support/pcm_comparison.h"
#include "support/scoped_environment.h"
#include "support/source_reading.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

// Music-like material: chords, noise bursts, plucked notes, a fade and
// digital silence, so that the encoder's frames range from the smallest to
// the largest, its reservoir fills and empties, and short blocks occur.
constexpr const char* kMaterial =
    "synth 2.5 sine 220 sine 277 vol 0.5 : synth 0.6 pinknoise vol 0.8 : "
    "synth 1 sine 100 vol 0 : synth 2.5 pluck 330 pluck 440 vol 0.9 : "
    "synth 1.2 whitenoise fade 0 1.2 1.1 vol 0.5 : synth 2 square 110 sine 1760 vol 0.4 : "
    "synth 0.5 sine 50 vol 0";

// A request size that splits frames anywhere.
constexpr uint32_t kRequest = 10007 * 4;

struct Layout {
    int rate;
    int channels;
};

class VbrStreams : public ::testing::TestWithParam<Layout> {
  protected:
    test::TempDir dir_;
    test::ScopedEnvironment config_{"TUNEBOX_CONFIG_DIR", dir_.path().c_str()};
};

void expectSameAsLibmpg123(const std::string& path, const std::string& name) {
    SCOPED_TRACE(name);
    const std::vector<int16_t> reference = test::decodeFileWithMpg123(path);
    uint32_t lost = 0;
    const std::vector<int16_t> decoded = test::decodeWithBuiltinFeed(path, kRequest, &lost);
    ASSERT_FALSE(reference.empty());
    EXPECT_EQ(decoded.size(), reference.size());
    EXPECT_EQ(lost, 0u);
    const test::PcmDifference difference = test::comparePcm(decoded, reference);
    EXPECT_LE(difference.maxDifference, 1);
    EXPECT_LE(difference.rms, 0.07);
}

TEST_P(VbrStreams, EveryQualityMatchesLibmpg123GaplessWithinOneLsb) {
    const Layout layout = GetParam();
    const std::string wav =
        test::synthesise(dir_ / "music.wav", layout.rate, layout.channels, kMaterial);
    for (int quality = 0; quality <= 9; ++quality) {
        const std::string mp3 = (dir_ / ("v" + std::to_string(quality) + ".mp3")).string();
        test::runTool("lame --quiet -V " + std::to_string(quality) + " " + wav + " " + mp3);
        expectSameAsLibmpg123(mp3, "-V " + std::to_string(quality));
    }
    // A constant bit rate carries the same tag, with the same delays.
    const std::string cbr = (dir_ / "cbr.mp3").string();
    test::runTool("lame --quiet -b 64 " + wav + " " + cbr);
    expectSameAsLibmpg123(cbr, "-b 64");
}

INSTANTIATE_TEST_SUITE_P(Rates, VbrStreams,
                         ::testing::Values(Layout{44100, 2}, Layout{44100, 1}, Layout{32000, 2},
                                           Layout{32000, 1}, Layout{22050, 2}, Layout{22050, 1},
                                           Layout{8000, 2}, Layout{8000, 1}),
                         [](const auto& info) {
                             return std::to_string(info.param.rate) +
                                    (info.param.channels == 2 ? "_stereo" : "_mono");
                         });

}  // namespace
}  // namespace tunebox
