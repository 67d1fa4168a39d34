// The frame check word: lame's protected streams must pass it, a flipped
// side-information bit must fail it, and the decoder counts the failure but
// keeps the frame's audio.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "mp3/decoder/frame_crc.h"
#include "mp3/decoder/layer3_side_info.h"
#include "mp3/decoder/mpeg_audio_decoder.h"
#include "stream_frames.h"
#include "support/pcm_comparison.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

std::vector<uint8_t> makeProtectedStream(int rate, int channels, const std::string& options) {
    const test::TempDir dir;
    return test::readBytes(test::synthesiseMp3(dir / "stream.mp3", rate, channels,
                                               "synth 1 sine 200-5000 pinknoise vol 0.4",
                                               "-t -p " + options));
}

TEST(FrameCrc, ProtectedLameFramesPassInEveryVersion) {
    for (const auto& [rate, channels] : {std::pair{44100, 2}, std::pair{22050, 1}}) {
        const auto stream = makeProtectedStream(rate, channels, "-b 64");
        const auto frames = test::streamFrames(stream);
        ASSERT_GT(frames.size(), 10u);
        for (const test::StreamFrame& frame : frames) {
            ASSERT_TRUE(frame.header.crcProtected());
            EXPECT_TRUE(frameCrcMatches(std::span(stream).subspan(frame.offset), frame.header))
                << "frame at byte " << frame.offset << ", " << rate << " Hz";
        }
        MpegAudioDecoder decoder;
        std::vector<int16_t> pcm;
        EXPECT_EQ(decoder.decodeStream(stream, pcm), frames.size());
        EXPECT_EQ(decoder.crcMismatches(), 0u);
    }
}

TEST(FrameCrc, FlippedGlobalGainBitFailsButTheFrameStillDecodes) {
    auto stream = makeProtectedStream(44100, 2, "-m s -b 128");
    const auto frames = test::streamFrames(stream);
    ASSERT_GT(frames.size(), 20u);
    const test::StreamFrame& target = frames[10];
    const std::size_t sideStart = target.offset + kFrameHeaderBytes + kCrcBytes;

    // MPEG-1 stereo: main_data_begin (9), private bits (3) and scfsi (2 x 4)
    // come first, then part2_3_length (12) and big_values (9) of granule 0,
    // channel 0: bit 48, the top bit of byte 6, is the global gain's lowest.
    auto globalGain = [&] {
        BitReader reader(
            std::span<const uint8_t>(stream).subspan(sideStart, target.header.sideInfoBytes()));
        Layer3SideInfo info;
        EXPECT_EQ(readSideInfo(reader, target.header, info), 1);
        return info.granule[0][0].globalGain;
    };
    const int gainBefore = globalGain();
    stream[sideStart + 6] ^= 0x80;
    ASSERT_EQ(std::abs(globalGain() - gainBefore), 1);

    EXPECT_FALSE(frameCrcMatches(std::span(stream).subspan(target.offset), target.header));
    MpegAudioDecoder decoder;
    std::vector<int16_t> pcm;
    EXPECT_EQ(decoder.decodeStream(stream, pcm), frames.size());
    EXPECT_EQ(pcm.size(), frames.size() * 2 * 1152);
    EXPECT_EQ(decoder.crcMismatches(), 1u);
}

}  // namespace
}  // namespace tunebox
