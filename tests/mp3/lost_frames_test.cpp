// Frames the built-in decoder cannot decode: each leaves a frame of silence,
// is counted and logged, and the rest of the stream keeps its time and its
// samples.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "mp3/decoder/xing_tag.h"
#include "stream_frames.h"
#include "support/command_runner.h"
#include "support/log_records.h"
#include "support/riff_bytes.h"
#include "support/scoped_environment.h"
#include "support/source_reading.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

constexpr uint32_t kRequest = 91728;
constexpr std::size_t kSamples = 1152;  // per channel and frame, MPEG-1
constexpr std::size_t kChannels = 2;

// Where each frame starts, the tag frame first.
std::vector<std::size_t> frameOffsets(const std::vector<uint8_t>& bytes) {
    std::vector<std::size_t> offsets;
    for (const test::StreamFrame& frame : test::streamFrames(bytes)) {
        offsets.push_back(frame.offset);
    }
    return offsets;
}

// Window switching with the reserved block type 0 in granule 0 of the left
// channel of a stereo frame: its side information cannot be decoded.
void damageSideInfo(std::vector<uint8_t>& bytes, std::size_t frame) {
    const std::size_t flagBit = 32 + 9 + 3 + 8 + 12 + 9 + 8 + 4;
    bytes[frame + flagBit / 8] |= static_cast<uint8_t>(0x80 >> (flagBit % 8));
    for (std::size_t bit = flagBit + 1; bit < flagBit + 3; ++bit) {
        bytes[frame + bit / 8] &= static_cast<uint8_t>(~(0x80 >> (bit % 8)));
    }
}

bool silent(const std::vector<int16_t>& samples, std::size_t from, std::size_t to) {
    return std::all_of(samples.begin() + static_cast<std::ptrdiff_t>(from),
                       samples.begin() + static_cast<std::ptrdiff_t>(to),
                       [](int16_t sample) { return sample == 0; });
}

bool same(const std::vector<int16_t>& a, const std::vector<int16_t>& b, std::size_t from,
          std::size_t to) {
    return std::equal(a.begin() + static_cast<std::ptrdiff_t>(from),
                      a.begin() + static_cast<std::ptrdiff_t>(to),
                      b.begin() + static_cast<std::ptrdiff_t>(from));
}

class LostFramesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        good_ = test::readBytes(
            test::synthesiseMp3(log_.dir() / "good.mp3", 44100, 2,
                                "synth 3 sine 220 sine 277 vol 0.5 : synth 1 pinknoise vol 0.7 : "
                                "synth 3 pluck 330 pluck 440 vol 0.8",
                                "-V 5"));
        offsets_ = frameOffsets(good_);
        ASSERT_GT(offsets_.size(), 150u);
        XingTag tag;
        ASSERT_TRUE(readXingTag(std::span(good_).subspan(0, offsets_[1]), tag));
        start_ = tag.encoderDelay + 529;
        clean_ = test::decodeWithBuiltinFeed(path("good.mp3"), kRequest);
    }
    std::string path(const std::string& name) const { return (log_.dir() / name).string(); }

    std::string write(const std::string& name, const std::vector<uint8_t>& bytes) const {
        test::writeFile(path(name), bytes);
        return path(name);
    }

    // The first interleaved sample of audio frame `frame` (the tag frame is
    // frame 0) in the trimmed output.
    std::size_t sampleOf(std::size_t frame) const {
        return ((frame - 1) * kSamples - start_) * kChannels;
    }

    test::LogDirectory log_;
    test::ScopedEnvironment config_{"TUNEBOX_CONFIG_DIR", log_.dir().path().c_str()};
    std::vector<uint8_t> good_;
    std::vector<std::size_t> offsets_;
    std::size_t start_ = 0;
    std::vector<int16_t> clean_;
};

TEST_F(LostFramesTest, UndecodableFrameBecomesOneFrameOfSilenceAndIsCounted) {
    std::vector<uint8_t> bytes = good_;
    damageSideInfo(bytes, offsets_[60]);
    uint32_t lost = 0;
    const auto decoded = test::decodeWithBuiltinFeed(write("side.mp3", bytes), kRequest, &lost);
    EXPECT_EQ(lost, 1u);
    ASSERT_EQ(decoded.size(), clean_.size());
    EXPECT_TRUE(same(decoded, clean_, 0, sampleOf(60)));
    EXPECT_TRUE(silent(decoded, sampleOf(60), sampleOf(61)));
    // The next frame lacks only the lost one's overlap; its main data is kept.
    EXPECT_TRUE(same(decoded, clean_, sampleOf(62), clean_.size()));
    const auto messages = log_.messages();
    EXPECT_NE(std::find(messages.begin(), messages.end(), "★mp3ConvertMyDecoder:lostframes=1"),
              messages.end());
}

TEST_F(LostFramesTest, FrameWithoutItsHeaderKeepsItsTimeAsSilence) {
    std::vector<uint8_t> bytes = good_;
    bytes[offsets_[100]] = 0;
    bytes[offsets_[100] + 1] = 0;
    uint32_t lost = 0;
    const auto decoded = test::decodeWithBuiltinFeed(write("sync.mp3", bytes), kRequest, &lost);
    ASSERT_EQ(decoded.size(), clean_.size());
    EXPECT_TRUE(same(decoded, clean_, 0, sampleOf(100)));
    // Frames reaching back into the lost frame's main data are lost too,
    // and silent; after them the stream is itself again but for overlap.
    ASSERT_GE(lost, 1u);
    ASSERT_LE(lost, 6u);
    EXPECT_TRUE(silent(decoded, sampleOf(100), sampleOf(100 + lost)));
    EXPECT_TRUE(same(decoded, clean_, sampleOf(100 + lost + 1), clean_.size()));
}

TEST_F(LostFramesTest, DecodeCommandReportsTheLostFrames) {
    std::vector<uint8_t> bytes = good_;
    damageSideInfo(bytes, offsets_[30]);
    damageSideInfo(bytes, offsets_[90]);
    const std::string damaged = write("two.mp3", bytes);
    const auto run = test::runTunebox(
        log_.dir(), "decode --decoder builtin '" + damaged + "' '" + path("two.wav") + "'");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.err.find("could not decode 2 frames; silence stands in their place"),
              std::string::npos)
        << run.err;
    const auto clean =
        test::runTunebox(log_.dir(), "decode --decoder builtin '" + path("good.mp3") + "' '" +
                                         path("good.wav") + "'");
    EXPECT_EQ(clean.err.find("could not decode"), std::string::npos) << clean.err;
    EXPECT_EQ(test::readBytes(path("two.wav")).size(), test::readBytes(path("good.wav")).size());
}

}  // namespace
}  // namespace tunebox
