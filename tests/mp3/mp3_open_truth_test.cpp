// What the MP3 opener believes about a file against what libmpg123 makes of
// it: random bytes are no stream, lengths are what a gapless decoder plays,
// and Layer I and II streams are timed as what they are.

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "mp3/mp3_open.h"
#include "support/log_records.h"
#include "support/riff_bytes.h"
#include "support/scoped_environment.h"
#include "support/source_reading.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

using Bytes = std::vector<uint8_t>;

class Mp3OpenTruthTest : public ::testing::Test {
  protected:
    std::string lame(const std::string& name, const std::string& options) {
        return test::synthesiseMp3(dir_ / name, 44100, 2, "synth 6 sine 440 vol 0.5", options);
    }

    test::LogDirectory log_;
    const test::TempDir& dir_ = log_.dir();
    test::ScopedEnvironment config_{"TUNEBOX_CONFIG_DIR", dir_.path().c_str()};
};

using test::open;
using test::Opened;

// Native-PCM bytes of the mpg123 player's own (gapless) decode of the file.
uint32_t mpg123Length(const std::string& path, long rate) {
    const std::string raw = path + ".raw";
    test::runTool("mpg123 -q --stereo -O '" + raw + "' '" + path + "'");
    const auto frames = static_cast<double>(std::filesystem::file_size(raw) / 4);
    return static_cast<uint32_t>(frames / static_cast<double>(rate) * 176400);
}

TEST_F(Mp3OpenTruthTest, TwoHundredFilesOfRandomBytesNeverOpen) {
    std::mt19937 random(1123);
    std::uniform_int_distribution<int> byte(0, 255);
    for (int file = 0; file < 200; ++file) {
        Bytes bytes(1000);
        for (auto& b : bytes) {
            b = static_cast<uint8_t>(byte(random));
        }
        const std::string path =
            (dir_ / ("random-" + std::to_string(file) + (file % 2 == 0 ? ".wav" : ".mp3")))
                .string();
        test::writeFile(path, bytes);
        for (const uint32_t builtin : {0u, 1u}) {
            Opened opened;
            ASSERT_FALSE(open(path, opened, builtin)) << path;
            EXPECT_EQ(opened.source, nullptr);
        }
    }
}

TEST_F(Mp3OpenTruthTest, LameTaggedLengthsLeaveOutTheEncodersDelayAndPadding) {
    // lame takes the average rate down to 32 kHz.
    for (const std::string options : {"-b 128", "-V 2", "--abr 96"}) {
        SCOPED_TRACE(options);
        const std::string path = lame("tagged.mp3", options);
        Opened opened;
        ASSERT_TRUE(open(path, opened));
        EXPECT_EQ(opened.length, 264600u * 4);  // the six seconds that went in
        EXPECT_EQ(opened.length,
                  mpg123Length(path, opened.description().mp3->firstHeader.sampleRate));
    }
}

TEST_F(Mp3OpenTruthTest, AVariableRateWithoutAFrameCountIsMeasuredFrameByFrame) {
    // All fourteen bit rates in turn, and no "Xing" frame.
    const auto path =
        std::filesystem::path(TUNEBOX_TESTDATA_DIR) / "mp3-conformance" / "l3-he_44khz.bit";
    Opened opened;
    ASSERT_TRUE(open(path.string(), opened));
    const Mp3StreamFacts facts = *opened.description().mp3;
    EXPECT_EQ(opened.length, mpg123Length(path.string(), 44100));
    const auto bytes = test::readBytes(path);
    const double seconds = opened.length / 176400.0;
    EXPECT_NEAR(facts.averageBitRate, bytes.size() * 8 / seconds / 1000, 1.0);
    EXPECT_NE(facts.averageBitRate, facts.firstHeader.bitRate);
}

TEST_F(Mp3OpenTruthTest, LayerOneAndTwoAreTimedAsThemselvesAndOpenWithTheBuiltinDecoder) {
    // Layer I, 288 kbit/s at 32 kHz: 432-byte frames of silence.
    Bytes layer1;
    for (int frame = 0; frame < 100; ++frame) {
        const Bytes bytes{0xFF, 0xFF, 0x98, 0x00};
        layer1.insert(layer1.end(), bytes.begin(), bytes.end());
        layer1.resize(layer1.size() + 428, 0);
    }
    const std::string one = (dir_ / "one.mp1").string();
    test::writeFile(one, layer1);
    const std::string two = (dir_ / "two.mp2").string();
    test::synthesise(dir_ / "two.wav", 44100, 2, "synth 3 sine 440 vol 0.5");
    test::runTool("ffmpeg -loglevel error -y -i " + (dir_ / "two.wav").string() +
                  " -c:a mp2 -b:a 192k " + two);
    const struct {
        std::string path;
        uint32_t layer, bitRate, rate;
    } cases[] = {{one, 1, 288, 32000}, {two, 2, 192, 44100}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        Opened opened;
        ASSERT_TRUE(open(c.path, opened, 1));
        EXPECT_TRUE(opened.description().builtinDecoder);
        const Mp3StreamFacts facts = *opened.description().mp3;
        EXPECT_EQ(mpegLayerNumber(facts.firstHeader), c.layer);
        EXPECT_EQ(facts.averageBitRate, c.bitRate);
        // The bit-rate formula over a constant rate is within a sample of the frames.
        EXPECT_NEAR(opened.length, mpg123Length(c.path, c.rate), 8.0);
    }
}

TEST_F(Mp3OpenTruthTest, TrailingZerosAreNotPlayingTime) {
    const std::string path = lame("padded.mp3", "-b 128");
    Opened alone;
    ASSERT_TRUE(open(path, alone));
    const std::string zeros = (dir_ / "zeros.mp3").string();
    std::filesystem::copy_file(path, zeros);
    // Two gigabytes of zeros, sparse, so the test costs no disk.
    std::filesystem::resize_file(zeros, std::filesystem::file_size(path) + (2ull << 30));
    Opened opened;
    ASSERT_TRUE(open(zeros, opened));
    EXPECT_EQ(opened.length, alone.length);

    // Without a frame count the frames are walked: the zeros end the walk.
    const std::string untagged = lame("untagged.mp3", "-t -b 128");
    Opened plain;
    ASSERT_TRUE(open(untagged, plain));
    std::filesystem::resize_file(untagged, std::filesystem::file_size(untagged) + (2ull << 30));
    Opened walked;
    ASSERT_TRUE(open(untagged, walked));
    EXPECT_EQ(walked.length, plain.length);
}

}  // namespace
}  // namespace tunebox
