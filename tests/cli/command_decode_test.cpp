// The decode command on MPEG streams: the built-in decoder's raw output
// against the conformance reference, and either decoder's native output.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "support/command_runner.h"
#include "support/layer1_stream_writer.h"
#include "support/pcm_comparison.h"
#include "support/riff_bytes.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

constexpr std::size_t kWaveHeaderBytes = 44;

std::vector<int16_t> samplesOf(const std::filesystem::path& wav) {
    auto bytes = test::readBytes(wav);
    bytes.erase(bytes.begin(), bytes.begin() + std::min(bytes.size(), kWaveHeaderBytes));
    return test::toSamples(bytes);
}

class CommandDecodeTest : public ::testing::Test {
  protected:
    void SetUp() override { setenv("TUNEBOX_CONFIG_DIR", dir_.path().c_str(), 1); }
    void TearDown() override { unsetenv("TUNEBOX_CONFIG_DIR"); }

    test::TempDir dir_;
    const std::string streams_ = std::string(TUNEBOX_TESTDATA_DIR) + "/mp3-conformance/";
};

TEST_F(CommandDecodeTest, BuiltinRawOutputMatchesTheConformanceReference) {
    for (const std::string name : {"l3-si", "l3-he_48khz", "M2L3_compl24"}) {
        SCOPED_TRACE(name);
        const auto out = dir_ / (name + ".wav");
        const auto run = test::runTunebox(dir_, "decode --decoder builtin --raw '" + streams_ +
                                                    name + ".bit' '" + out.string() + "'");
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_NE(run.err.find("(built-in decoder)"), std::string::npos);
        const auto decoded = samplesOf(out);
        const auto reference = test::toSamples(test::readBytes(streams_ + name + ".pcm"));
        // Every frame comes out; a reference may lack the last one.
        ASSERT_GE(decoded.size(), reference.size());
        ASSERT_LE(decoded.size(), reference.size() + 1152 * 2);
        const test::PcmDifference difference = test::comparePcm(decoded, reference);
        EXPECT_LE(difference.maxDifference, 1);
        EXPECT_LE(difference.rms, 0.07);
    }
}

TEST_F(CommandDecodeTest, LayerOneAndTwoAccompanimentsDecodeAlikeThroughEitherDecoder) {
    const std::string wav =
        test::synthesise(dir_ / "song.wav", 48000, 2, "synth 2 sine 300-3000 pinknoise vol 0.5");
    const auto mp2 = dir_ / "song.mp2";
    test::runTool("ffmpeg -y -i '" + wav + "' -c:a mp2 -b:a 160k '" + mp2.string() + "'");
    test::Layer1StreamSpec joint;
    joint.bitRateIndex = 12;
    joint.channelMode = 1;
    joint.modeExtension = 2;
    joint.frames = 300;
    const auto mp1 = dir_ / "song.mp1";
    test::writeFile(mp1, test::layer1Stream(joint));
    for (const auto& song : {mp2, mp1}) {
        SCOPED_TRACE(song);
        std::vector<int16_t> outputs[2];
        for (const int builtin : {0, 1}) {
            const auto out = dir_ / (song.stem().string() + song.extension().string() +
                                     (builtin ? ".builtin.wav" : ".system.wav"));
            const auto run = test::runTunebox(dir_, std::string("decode --decoder ") +
                                                        (builtin ? "builtin" : "system") + " '" +
                                                        song.string() + "' '" + out.string() + "'");
            ASSERT_EQ(run.status, 0) << run.err;
            EXPECT_EQ(run.err.find("(built-in decoder)") != std::string::npos, builtin == 1);
            outputs[builtin] = samplesOf(out);
        }
        ASSERT_EQ(outputs[1].size(), outputs[0].size());
        EXPECT_LE(test::comparePcm(outputs[1], outputs[0]).maxDifference, 1);
    }
}

}  // namespace
}  // namespace tunebox
