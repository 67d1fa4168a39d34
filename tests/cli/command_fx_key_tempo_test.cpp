// The fx command moving a file in key and tempo.

#include <gtest/gtest.h>

#include <cstring>

#include "support/command_runner.h"
#include "support/riff_bytes.h"
#include "support/temp_dir.h"
#include "support/test_files.h"
#include "support/tone.h"

namespace tunebox {
namespace {

constexpr std::size_t kHeaderBytes = 44;
constexpr std::size_t kToneFrames = 3 * 44100;

class FxKeyTempoTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const auto tone = test::stereoTone(440, kToneFrames);
        test::Bytes bytes(tone.size() * 2);
        std::memcpy(bytes.data(), tone.data(), bytes.size());
        test::writeFile(path("in.wav"), test::nativeWave(bytes));
    }

    // The samples fx writes with `options`.
    std::vector<int16_t> render(const std::string& options) {
        const auto result = test::runTunebox(
            dir_, "fx '" + path("in.wav") + "' '" + path("out.wav") + "' --overwrite " + options);
        EXPECT_EQ(result.status, 0) << result.err;
        const auto bytes = test::readBytes(path("out.wav"));
        std::vector<int16_t> samples((bytes.size() - kHeaderBytes) / 2);
        std::memcpy(samples.data(), bytes.data() + kHeaderBytes, samples.size() * 2);
        return samples;
    }

    std::string path(const std::string& name) const { return (dir_ / name).string(); }

    test::TempDir dir_;
};

// Two semitones up from 440 Hz is 493.88 Hz; the tone keeps its length.
TEST_F(FxKeyTempoTest, TwoSemitonesUpRaisesTheToneAndKeepsTheLength) {
    const auto raised = render("--key +2");
    EXPECT_NEAR(test::leftFrequency(raised), 493.88, 493.88 * 0.005);
    EXPECT_NEAR(double(raised.size()) / 2, double(kToneFrames), kToneFrames * 0.005);
}

// 80 % tempo plays 1.25 times as long, at the same pitch; cents move the
// pitch on top of the semitones.
TEST_F(FxKeyTempoTest, SlowerTempoLengthensAndCentsFineTune) {
    const auto slower = render("--tempo 80");
    EXPECT_NEAR(double(slower.size()) / 2, kToneFrames * 1.25, kToneFrames * 1.25 * 0.005);
    EXPECT_NEAR(test::leftFrequency(slower), 440.0, 440.0 * 0.005);
    const auto fine = render("--key -1 --cents -50 --tempo 130 --keep-formants");
    EXPECT_NEAR(test::leftFrequency(fine), 440.0 * std::exp2(-1.5 / 12), 440.0 * 0.005);
    EXPECT_NEAR(double(fine.size()) / 2, kToneFrames / 1.3, kToneFrames / 1.3 * 0.005);
}

TEST_F(FxKeyTempoTest, NeutralKeyAndTempoIsBitExactWithThePlainOutput) {
    EXPECT_EQ(render("--key 0 --cents 0 --tempo 100"), render(""));
}

TEST_F(FxKeyTempoTest, ValuesOutOfRangeAreRefused) {
    for (const char* option : {"--key 7", "--cents -51", "--tempo 69", "--tempo 131"}) {
        const auto result = test::runTunebox(
            dir_, "fx '" + path("in.wav") + "' '" + path("out.wav") + "' " + option);
        EXPECT_NE(result.status, 0) << option;
        EXPECT_FALSE(result.err.empty()) << option;
    }
}

}  // namespace
}  // namespace tunebox
