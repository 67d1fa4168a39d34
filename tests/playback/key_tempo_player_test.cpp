// The player with the key and tempo stage: what the device gets while the
// key moves, and the song time the clock shows at another tempo.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <mutex>

#include "core/playback_clock.h"
#include "playback/song_clock.h"
#include "playback/wave_ctl.h"
#include "support/loopback_listener.h"
#include "support/player_support.h"
#include "support/signal_measure.h"
#include "support/temp_dir.h"
#include "support/test_files.h"
#include "support/tone.h"

namespace tunebox {
namespace {

using test::waitUntil;

constexpr uint32_t kOneMs = kNativeSampleRate / 1000;  // frames

class KeyTempoPlayerTest : public ::testing::Test {
  protected:
    std::string toneFile(uint32_t seconds) {
        const auto tone = test::stereoTone(440, std::size_t{seconds} * kNativeSampleRate);
        std::vector<uint8_t> bytes(tone.size() * 2);
        std::memcpy(bytes.data(), tone.data(), bytes.size());
        const auto path = dir_.path() / "tone.wav";
        EXPECT_TRUE(test::writeWav(path, bytes));
        length_ = static_cast<uint32_t>(bytes.size());
        return path.string();
    }

    // Starts a player that may move on `path` and lets the device play its
    // first second, all at neutral.
    void playForASecond(WaveCtl& player, const std::string& path) {
        player.wavInit({.keyTempoMayMove = true});
        ASSERT_EQ(player.wavOpenFile(path, 0, length_), 1);
        ASSERT_EQ(player.wavPlay(), 1);
        ASSERT_TRUE(
            waitUntil([&] { return player.wavGetDevicePosition() >= kNativeBytesPerSecond; }));
    }

    // Slow enough that the stage keeps up on a loaded machine: a device
    // starved for real time would show gaps that are not the player's.
    std::shared_ptr<VirtualAudio> audio_ =
        std::make_shared<VirtualAudio>(VirtualAudioConfig{.speed = 4});
    test::TempDir dir_;
    uint32_t length_ = 0;
};

std::vector<int16_t> samplesOf(const std::vector<uint8_t>& bytes, std::size_t fromFrame,
                               std::size_t frames) {
    std::vector<int16_t> samples(frames * 2);
    std::memcpy(samples.data(), bytes.data() + fromFrame * 4, samples.size() * 2);
    return samples;
}

// Two semitones up, then three down while the device plays: the stream
// never falls silent, and each part is at its own pitch.
TEST_F(KeyTempoPlayerTest, MovingTheKeyWhilePlayingLeavesNoGap) {
    const std::string path = toneFile(6);
    test::LoopbackListener listener(*audio_, 30);
    ASSERT_TRUE(listener.listening());
    WaveCtl player(*audio_);
    player.wavInit({.keyTempo = {.semitones = 2}});
    ASSERT_EQ(player.wavOpenFile(path, 0, length_), 1);
    ASSERT_EQ(player.wavPlay(), 1);
    ASSERT_TRUE(
        waitUntil([&] { return player.wavGetDevicePosition() >= 2 * kNativeBytesPerSecond; }));
    player.wavSetKeyTempo({.semitones = -3});
    ASSERT_TRUE(waitUntil([&] { return player.wavIsStopped() == 1; }));
    const auto heard = listener.heard();
    ASSERT_GT(heard.size(), 5 * kNativeBytesPerSecond);
    EXPECT_LE(test::longestSilence(heard), kOneMs);
    EXPECT_NEAR(test::leftFrequency(samplesOf(heard, kNativeSampleRate / 2, kNativeSampleRate)),
                493.88, 2.5);
    EXPECT_NEAR(test::leftFrequency(samplesOf(heard, 4 * kNativeSampleRate, kNativeSampleRate / 2)),
                440 * std::exp2(-3 / 12.0), 2.0);
}

// At 80 % the device plays 1.25 s for each second of the song: the time
// display and the slider count the song's.
TEST_F(KeyTempoPlayerTest, TheClockShowsSongTimeAtAnotherTempo) {
    const std::string path = toneFile(8);
    WaveCtl player(*audio_);
    player.wavInit({.keyTempo = {.tempoPercent = 80}});
    ASSERT_EQ(player.wavOpenFile(path, 0, length_), 1);
    ASSERT_EQ(player.wavPlay(), 1);
    ASSERT_TRUE(waitUntil([&] { return player.wavGetDevicePosition() >= kNativeBytesPerSecond; }));
    audio_->setClockStalled(true);
    const uint32_t device = player.wavGetDevicePosition();
    EXPECT_EQ(player.wavGetSongPosition(), uint64_t{device} * 80 / 100);
    EXPECT_EQ(player.wavGetSliderPos(),
              sliderPosition(0, device * 4 / 5, kNativeBytesPerSecond, 0, length_));
    audio_->setClockStalled(false);
    player.wavStop();
}

// What the device is given, kept in order; the count is read while playing.
class DeviceBlocks final : public BlockObserver {
  public:
    void onBlock(const uint8_t* bytes, uint32_t count, uint32_t) override {
        std::lock_guard guard(lock_);
        bytes_.insert(bytes_.end(), bytes, bytes + count);
        blocks_.push_back(count);
    }
    uint64_t total() {
        std::lock_guard guard(lock_);
        return bytes_.size();
    }
    std::vector<uint8_t> bytes() {
        std::lock_guard guard(lock_);
        return bytes_;
    }
    std::vector<uint32_t> blocks() {
        std::lock_guard guard(lock_);
        return blocks_;
    }

  private:
    std::mutex lock_;
    std::vector<uint8_t> bytes_;
    std::vector<uint32_t> blocks_;
};

// A player that may move: it starts bit-exact, leaves neutral and comes
// back while the device plays, never falling silent nor clicking, and once the
// stretcher's tail is out it plays the file's own samples again.
TEST_F(KeyTempoPlayerTest, LeavingNeutralAndComingBackLeavesNoGapAndEndsBitExact) {
    const std::string path = toneFile(7);
    const auto source = test::readBytes(path);
    test::LoopbackListener listener(*audio_, 36);
    ASSERT_TRUE(listener.listening());
    DeviceBlocks device;
    WaveCtl player(*audio_, &device);
    ASSERT_NO_FATAL_FAILURE(playForASecond(player, path));
    player.wavSetKeyTempo({.semitones = 3, .tempoPercent = 90});
    EXPECT_EQ(player.wavGetKeyTempo().semitones, 3);
    ASSERT_TRUE(
        waitUntil([&] { return player.wavGetDevicePosition() >= 3 * kNativeBytesPerSecond; }));
    player.wavSetKeyTempo({});
    ASSERT_TRUE(waitUntil([&] { return player.wavIsStopped() == 1; }));

    EXPECT_LE(test::longestSilence(listener.heard()), kOneMs);
    const auto given = device.bytes();
    EXPECT_LE(test::longestSilence(given), kOneMs);
    // Nor does it click where the stage takes over or hands back: a tone of
    // 440 Hz moved up three semitones (523 Hz) steps by 0.075 of its peak.
    EXPECT_LT(test::steepestStep(given), 0.1);
    // The first block went out before any move, the last long after the
    // tail: both are the file's own bytes.
    const auto blocks = device.blocks();
    ASSERT_GE(blocks.size(), 4u);
    const auto firstEnd = given.begin() + blocks.front();
    EXPECT_TRUE(std::equal(given.begin(), firstEnd, source.end() - length_));
    // A block the end cut to nothing adds no bytes: the one before is last.
    const uint32_t last = blocks.back() > 0 ? blocks.back() : blocks[blocks.size() - 2];
    const auto lastBlock = given.end() - last;
    EXPECT_NE(std::search(source.begin(), source.end(), lastBlock, lastBlock + last), source.end());
}

// A change of tempo counts from the first block made at the new tempo, not
// from when it was asked: the blocks already queued play at the old one.
TEST_F(KeyTempoPlayerTest, SongTimeStaysExactAcrossATempoChange) {
    const std::string path = toneFile(8);
    DeviceBlocks device;
    WaveCtl player(*audio_, &device);
    ASSERT_NO_FATAL_FAILURE(playForASecond(player, path));
    // Stalled, the clock runs no tick: every block given so far is at 100 %.
    audio_->setClockStalled(true);
    const uint64_t givenAtFullTempo = device.total();
    ASSERT_GT(givenAtFullTempo, player.wavGetDevicePosition());
    player.wavSetKeyTempo({.tempoPercent = 80});
    audio_->setClockStalled(false);
    ASSERT_TRUE(waitUntil([&] {
        return player.wavGetDevicePosition() >= givenAtFullTempo + 2 * kNativeBytesPerSecond;
    }));
    audio_->setClockStalled(true);
    const uint64_t played = player.wavGetDevicePosition();
    EXPECT_EQ(player.wavGetSongPosition(),
              givenAtFullTempo + (played - givenAtFullTempo) * 80 / 100);
    audio_->setClockStalled(false);
    player.wavStop();
}

TEST(SongClock, EachBlockCountsAtTheTempoItWasMadeAt) {
    constexpr uint32_t kBlock = 91728;
    SongClock clock;
    clock.startRun();
    uint32_t given = 0;
    while (given < 75 * kNativeBytesPerSecond + kBlock) {
        clock.addBlock(kBlock, 80);
        given += kBlock;
    }
    // 75 s of the device at 80 % are a minute of the song.
    const ClockTime time =
        clockTime(0, clock.songBytes(75 * kNativeBytesPerSecond), kNativeBytesPerSecond, 0);
    EXPECT_EQ(time.minutes, 1u);
    EXPECT_EQ(time.seconds, 0u);
    EXPECT_EQ(time.frames, 0u);

    // Two blocks at 100 %, then 120 %: the position moves by the block it
    // lies in, and never past what the device was given.
    clock.startRun();
    clock.addBlock(kBlock, kFullTempo);
    clock.addBlock(kBlock, kFullTempo);
    clock.addBlock(kBlock, 120);
    EXPECT_EQ(clock.songBytes(kBlock + 400), kBlock + 400);
    EXPECT_EQ(clock.songBytes(2 * kBlock + 400), 2 * kBlock + 480);
    EXPECT_EQ(clock.songBytes(10 * kBlock), 2 * kBlock + kBlock * 6 / 5);
    // Far more blocks than the device ever holds: the newest still count.
    for (int i = 0; i < 100; ++i) {
        clock.addBlock(kBlock, 50);
    }
    EXPECT_EQ(clock.songBytes(102 * kBlock + 1000),
              2 * kBlock + kBlock * 6 / 5 + 99 * kBlock / 2 + 500);
    clock.startRun();
    EXPECT_EQ(clock.songBytes(12345), 0u);
}

}  // namespace
}  // namespace tunebox
