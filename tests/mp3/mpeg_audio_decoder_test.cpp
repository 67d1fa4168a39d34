// The decoder object's contract on whole, cut, out-of-order and damaged frames.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

#include "mp3/decoder/mpeg_audio_decoder.h"
#include "stream_frames.h"
#include "support/pcm_comparison.h"

namespace tunebox {
namespace {

const std::filesystem::path kStream =
    std::filesystem::path(TUNEBOX_TESTDATA_DIR) / "mp3-conformance" / "l3-si_block.bit";

std::vector<std::span<const uint8_t>> splitFrames(const std::vector<uint8_t>& bytes) {
    std::vector<std::span<const uint8_t>> frames;
    for (const test::StreamFrame& frame : test::streamFrames(bytes)) {
        frames.push_back(std::span(bytes).subspan(frame.offset, frame.header.frameBytes()));
    }
    return frames;
}

class MpegAudioDecoderTest : public ::testing::Test {
  protected:
    std::vector<uint8_t> bytes = test::readBytes(kStream);
    std::vector<std::span<const uint8_t>> frames = splitFrames(bytes);
    MpegAudioDecoder decoder;
    std::array<int16_t, MpegAudioDecoder::kMaxFrameSamples> pcm{};
    std::size_t written = 0;
};

TEST_F(MpegAudioDecoderTest, WholeFrameGivesOneFrameOfSamplesAndItsDescription) {
    ASSERT_GT(frames.size(), 10u);
    ASSERT_EQ(decoder.decodeFrame(frames[0], pcm, written), 1);
    EXPECT_EQ(written, 1152u);
    const MpegOutputDescription output = describeOutput(decoder.lastHeader());
    EXPECT_EQ(output.channels, 1);
    EXPECT_EQ(output.sampleRate, 44100);
    EXPECT_EQ(output.bitsPerSample, 16);
    EXPECT_EQ(output.pcmBytesPerFrame, 2304u);
}

TEST_F(MpegAudioDecoderTest, FrameWhoseReservoirIsMissingGivesNoOutputThenDecodingResumes) {
    std::size_t silentFrames = 0;
    std::size_t decodedFrames = 0;
    for (std::size_t i = 5; i < frames.size(); ++i) {
        ASSERT_EQ(decoder.decodeFrame(frames[i], pcm, written), 1);
        (written == 0 ? silentFrames : decodedFrames)++;
    }
    EXPECT_GE(silentFrames, 1u);
    EXPECT_LE(silentFrames, 4u);
    EXPECT_GT(decodedFrames, 0u);
}

TEST_F(MpegAudioDecoderTest, CutFrameOrTooSmallOutputFails) {
    EXPECT_EQ(decoder.decodeFrame(frames[0].first(frames[0].size() - 1), pcm, written), 0);
    EXPECT_EQ(decoder.decodeFrame(frames[0].first(20), pcm, written), 0);
    std::array<int16_t, 100> tooSmall{};
    EXPECT_EQ(decoder.decodeFrame(frames[0], tooSmall, written), 0);
    EXPECT_EQ(written, 0u);
}

TEST_F(MpegAudioDecoderTest, StreamSkipsGarbageAndTruncatedTail) {
    std::vector<uint8_t> damaged(300 + bytes.size() - 100, 0xFF);
    std::copy(bytes.begin(), bytes.end() - 100, damaged.begin() + 300);
    std::vector<int16_t> samples;
    const std::size_t decoded = decoder.decodeStream(damaged, samples);
    EXPECT_EQ(decoded, frames.size() - 1);
    EXPECT_EQ(samples.size(), (frames.size() - 1) * 1152);
}

}  // namespace
}  // namespace tunebox
