#include "playback/mixing_wave_ctl.h"

#include <gtest/gtest.h>

#include "support/log_records.h"
#include "support/loopback_listener.h"
#include "support/player_support.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

using test::initPlayer;
using test::LoopbackListener;
using test::patternBytes;
using test::waitUntil;
using test::writeWav;

constexpr uint32_t kBuffer = kEngineBlockBytes;

// Every block the ring hands out, taken on this thread as the capture pump
// takes them.
struct MixCopies {
    std::vector<uint8_t> bytes;
    std::vector<LingSlot> blocks;  // flags and lengths only

    void drain(LingBuffer& ring) {
        LingSlot* slot = nullptr;
        while (ring.get(slot) == 1) {
            bytes.insert(bytes.end(), slot->buf.get(), slot->buf.get() + slot->length);
            blocks.push_back({slot->endFlag, slot->length, nullptr});
        }
    }
};

class MixingWaveCtlTest : public ::testing::Test {
  protected:
    // Plays `data` to its end with the copy ring allocated as the dialog
    // does and drained as the capture pump does.
    MixCopies playToEnd(const std::vector<uint8_t>& data, const PlayRange& range = {}) {
        EXPECT_TRUE(writeWav(dir_ / "take.wav", data));
        MixingWaveCtl player(*audio_);
        EXPECT_EQ(allocateMixBuf(player.mixBuf(), kBuffer, 3), 1);
        initPlayer(player, range);
        EXPECT_EQ(
            player.wavOpenFile((dir_ / "take.wav").string(), 0, static_cast<uint32_t>(data.size())),
            1);
        EXPECT_EQ(player.wavPlay(), 1);
        MixCopies copies;
        EXPECT_TRUE(waitUntil([&] { return player.wavIsStopped() == 1; }, std::chrono::seconds(20),
                              [&] { copies.drain(player.mixBuf()); }));
        copies.drain(player.mixBuf());
        return copies;
    }

    std::shared_ptr<VirtualAudio> audio_ =
        std::make_shared<VirtualAudio>(VirtualAudioConfig{.speed = 20});
    test::TempDir dir_;
};

TEST_F(MixingWaveCtlTest, MixBufReceivesExactlyTheBytesSentToTheDevice) {
    const auto data = patternBytes(kBuffer * 9 / 2);
    LoopbackListener listener(*audio_, 6);
    ASSERT_TRUE(listener.listening());
    const MixCopies copies = playToEnd(data);
    const auto heard = listener.heard();
    EXPECT_EQ(heard.size(), 4 * kBuffer);
    EXPECT_TRUE(copies.bytes == heard);
    // Four played, then the cut end; ticks until the device has drained
    // may add more empty last blocks.
    ASSERT_GE(copies.blocks.size(), 5u);
    for (std::size_t i = 0; i < copies.blocks.size(); ++i) {
        EXPECT_EQ(copies.blocks[i].endFlag, i < 4 ? 0u : 1u) << "block " << i;
    }
    EXPECT_EQ(copies.blocks[4].length, 0u);
}

// The stop of the play range ends playback with the first block whose read
// began at or after it; that block itself is not played.
TEST_F(MixingWaveCtlTest, ThePlayRangeStopEndsAtTheFirstBlockReadAtOrAfterIt) {
    const auto data = patternBytes(6 * kBuffer);
    for (const auto& [stop, played] : {std::pair{3 * kBuffer - 100, 3 * kBuffer},
                                       {3 * kBuffer, 3 * kBuffer},
                                       {3 * kBuffer + 1, 4 * kBuffer}}) {
        PlayRange range{};
        range[kFadeOutEnd] = range[kFadeOutStart] = 0xFFFFFFFF;
        range[kRangeEnd] = stop;
        range[kEnvelopeEnable] = 1;
        const MixCopies copies = playToEnd(data, range);
        EXPECT_EQ(copies.bytes.size(), played) << "stop " << stop;
        EXPECT_EQ(copies.blocks.back().endFlag, 1u);
    }
}

TEST(MixingWaveCtl, AFullOrMissingCopyRingLogsEveryRefusedBlockAndFillsOn) {
    test::LogDirectory log;
    ASSERT_TRUE(writeWav(log.dir() / "take.wav", patternBytes(4 * kBuffer)));
    VirtualAudio audio;
    MixingWaveCtl player(audio);
    initPlayer(player);
    ASSERT_EQ(player.wavOpenFile((log.dir() / "take.wav").string(), 0, 4 * kBuffer), 1);
    EXPECT_EQ(player.filledCount(), 2u);
    EXPECT_EQ(log.messages(),
              (std::vector<std::string>{"Write1Buf:ﾊﾞｯﾌｧｵﾊﾞｰﾌﾛｰ", "Write1Buf:ﾊﾞｯﾌｧｵﾊﾞｰﾌﾛｰ"}));
}

}  // namespace
}  // namespace tunebox
