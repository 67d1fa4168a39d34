// Converted and resampled accompaniments keep every sample: their native PCM
// is as long as sox's or mpg123's decode of the same file, lines up with it
// from the first sample, and the command line gives the same bytes.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/command_runner.h"
#include "support/pcm_comparison.h"
#include "support/riff_bytes.h"
#include "support/scoped_environment.h"
#include "support/source_reading.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

constexpr uint32_t kPlayerBlock = 91728;
constexpr std::size_t kWaveHeaderBytes = 44;
constexpr std::size_t kFrameBytes = 4;
constexpr std::size_t kTailSamples = 2 * 2205;  // the last 50 ms, both channels
// A 1.5 s sweep that is still loud in its last milliseconds, so a lost tail or
// a shifted start shows.
constexpr const char* kSweep = "synth 1.5 sine 200-3000 vol 0.5";

// Native PCM as sox makes it from any file it reads, without dither.
std::string toNativeBySox(const std::string& input) {
    return "sox -D " + input + " -r 44100 -c 2 -b 16 -e signed-integer -t raw ";
}

class WholeLengthTest : public ::testing::Test {
  protected:
    std::string path(const std::string& name) const { return (dir_ / name).string(); }

    std::string makeSweep(const std::string& name, int rate, int channels,
                          const std::string& encoding) const {
        return test::synthesise(path(name), rate, channels, kSweep, encoding);
    }

    // The sweep as the MP3 file `mp3`, and mpg123's decode of it as native PCM.
    std::vector<int16_t> sweepMp3(const std::string& mp3, int rate, int channels,
                                  const std::string& lameOptions) const {
        test::synthesiseMp3(mp3, rate, channels, kSweep, lameOptions);
        test::runTool("mpg123 -q -w " + path("mpg123.wav") + " " + mp3);
        return soxNative(path("mpg123.wav"));
    }

    std::vector<int16_t> soxNative(const std::string& input) const {
        const std::string raw = path("reference.raw");
        test::runTool(toNativeBySox(input) + raw);
        return test::readPcm(raw);
    }

    // The data of a WAV file written by `tunebox decode`.
    std::vector<uint8_t> decodedByCli(const std::string& input, const std::string& options) const {
        const std::string out = path("cli.wav");
        const auto run =
            test::runTunebox(dir_, "decode --overwrite " + options + " " + input + " " + out);
        EXPECT_EQ(run.status, 0) << run.err;
        auto bytes = test::readBytes(out);
        bytes.erase(bytes.begin(), bytes.begin() + std::min(bytes.size(), kWaveHeaderBytes));
        return bytes;
    }

    test::TempDir dir_;
    test::ScopedEnvironment config_{"TUNEBOX_CONFIG_DIR", dir_.path().c_str()};
};

std::vector<uint8_t> readThroughReader(const std::string& file, uint32_t ownDecoder = 0) {
    test::Opened opened;
    EXPECT_TRUE(test::open(file, opened, ownDecoder)) << file;
    return opened.source ? test::readAll(opened, kPlayerBlock) : std::vector<uint8_t>{};
}

// Length to the frame, and content: the whole of it and its last 50 ms.
void expectLikeReference(const std::vector<uint8_t>& ours, const std::vector<int16_t>& reference,
                         double wholeDb, double tailDb) {
    const auto samples = test::toSamples(ours);
    EXPECT_NEAR(double(samples.size()), double(reference.size()), 2.0);
    ASSERT_GT(reference.size(), kTailSamples);
    EXPECT_GT(test::snrDb(samples, reference), wholeDb);
    const std::size_t tail = std::min(samples.size(), reference.size()) - kTailSamples;
    EXPECT_GT(test::snrDb(samples, reference, tail, kTailSamples), tailDb);
}

TEST_F(WholeLengthTest, ConvertedWavesKeepEveryFrameAndTheirReportedLength) {
    struct Case {
        std::string name;
        int rate;
        int channels;
        std::string encoding;
    };
    const std::vector<Case> cases{
        {"8k.wav", 8000, 2, "-b 16"},        {"22k.wav", 22050, 1, "-b 16"},
        {"48k.wav", 48000, 2, "-b 16"},      {"96k.wav", 96000, 2, "-b 16"},
        {"narrow.wav", 44100, 2, "-b 8"},    {"mono.wav", 44100, 1, "-b 16"},
        {"narrow22k.wav", 22050, 1, "-b 8"}, {"alaw.wav", 8000, 1, "-e a-law"},
        {"ulaw.wav", 8000, 2, "-e u-law"},
    };
    for (const auto& [name, rate, channels, encoding] : cases) {
        SCOPED_TRACE(name);
        const std::string file = makeSweep(name, rate, channels, encoding);
        test::Opened opened;
        ASSERT_TRUE(test::open(file, opened));
        ASSERT_TRUE(opened.description().converted);
        EXPECT_EQ(opened.length, 264600u);  // the playing time of the data: 1.5 s
        const auto ours = test::readAll(opened, kPlayerBlock);
        EXPECT_NEAR(double(ours.size()), double(opened.length), double(kFrameBytes));
        const auto reference = soxNative(file);
        if (rate == 44100) {
            EXPECT_EQ(test::toSamples(ours), reference);  // no resampling: exact
        } else {
            expectLikeReference(ours, reference, 40.0, 30.0);
        }
    }
}

TEST_F(WholeLengthTest, EveryRequestSizeGivesTheSameResampledStream) {
    const std::string file = makeSweep("48k.wav", 48000, 2, "-b 16");
    const auto whole = readThroughReader(file);
    for (const uint32_t request : {4u, 1000u, 300000u}) {
        test::Opened opened;
        ASSERT_TRUE(test::open(file, opened));
        EXPECT_EQ(test::readAll(opened, request), whole) << "request " << request;
    }
}

// Appends a chunk of loud bytes after the data and corrects the RIFF size.
void appendListChunk(const std::string& file) {
    auto bytes = test::readBytes(file);
    const char header[] = {'L', 'I', 'S', 'T', 0x00, 0x10, 0x00, 0x00};
    bytes.insert(bytes.end(), header, header + 8);
    bytes.insert(bytes.end(), 0x1000, uint8_t{0x7F});
    const auto riffSize = static_cast<uint32_t>(bytes.size() - 8);
    for (int i = 0; i < 4; ++i) {
        bytes[4 + i] = static_cast<uint8_t>(riffSize >> (8 * i));
    }
    test::writeFile(file, bytes);
}

TEST_F(WholeLengthTest, AChunkAfterTheDataIsNeverPlayed) {
    for (const auto& [name, rate, channels, encoding] :
         {std::tuple{"resampled.wav", 22050, 2, "-b 16"}, {"widened.wav", 44100, 1, "-b 8"}}) {
        SCOPED_TRACE(name);
        const std::string file =
            test::synthesise(path(name), rate, channels, "synth 0.5 sine 440", encoding);
        const auto plain = readThroughReader(file);
        appendListChunk(file);
        EXPECT_EQ(readThroughReader(file), plain);
        EXPECT_EQ(decodedByCli(file, ""), plain);
    }
}

TEST_F(WholeLengthTest, Mpeg2AndMpeg25KeepTheWholeLengthOfMpg123sDecode) {
    for (const auto& [rate, channels, bitRate] : {std::tuple{22050, 2, 64},
                                                  {24000, 1, 48},
                                                  {16000, 2, 32},
                                                  {11025, 1, 24},
                                                  {8000, 2, 16}}) {
        SCOPED_TRACE(rate);
        const std::string mp3 = path("stream" + std::to_string(rate) + ".mp3");
        const auto reference = sweepMp3(mp3, rate, channels, "-b " + std::to_string(bitRate));
        const auto ours = readThroughReader(mp3);
        expectLikeReference(ours, reference, 40.0, 30.0);
        EXPECT_EQ(decodedByCli(mp3, "--decoder system"), ours);
    }
}

// The built-in decoder gives the same gapless stream as mpg123; the second
// stage resamples all of it, its tail too.
TEST_F(WholeLengthTest, BuiltinDecoderFramesAllPassTheSecondStage) {
    for (const auto& [rate, channels] : {std::pair{22050, 2}, {16000, 1}, {11025, 2}}) {
        SCOPED_TRACE(rate);
        const std::string mp3 = path("builtin" + std::to_string(rate) + ".mp3");
        const auto reference = sweepMp3(mp3, rate, channels, "-b 32");
        const auto ours = decodedByCli(mp3, "--decoder builtin");
        expectLikeReference(ours, reference, 40.0, 30.0);
        EXPECT_EQ(readThroughReader(mp3, 1), ours);
    }
}

}  // namespace
}  // namespace tunebox
