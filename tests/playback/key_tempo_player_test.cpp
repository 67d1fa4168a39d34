// The player with the key and tempo stage: what the device gets while the
// key moves, and the song time the clock shows at another tempo.

#include <gtest/gtest.h>

#include <cstring>

#include "core/playback_clock.h"
#include "playback/song_clock.h"
#include "playback/wave_ctl.h"
#include "support/loopback_listener.h"
#include "support/player_support.h"
#include "support/temp_dir.h"
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

std::size_t longestSilence(const std::vector<uint8_t>& bytes) {
    std::size_t longest = 0;
    std::size_t run = 0;
    for (std::size_t at = 0; at + 4 <= bytes.size(); at += 4) {
        const bool silent = std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                                        bytes.begin() + static_cast<std::ptrdiff_t>(at + 4),
                                        [](uint8_t byte) { return byte == 0; });
        run = silent ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return longest;
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
    EXPECT_LE(longestSilence(heard), kOneMs);
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

TEST(SongClock, SeventyFiveSecondsAtEightyPercentAreAMinuteOfTheSong) {
    SongClock clock;
    clock.startRun(80);
    const uint32_t played = 75 * kNativeBytesPerSecond;
    const ClockTime time = clockTime(0, clock.songBytes(played), kNativeBytesPerSecond, 0);
    EXPECT_EQ(time.minutes, 1u);
    EXPECT_EQ(time.seconds, 0u);
    // A change counts on from where the device stood: 10 s at 80 %, then
    // 10 s at 120 %, are 20 s of the song.
    clock.startRun(80);
    clock.changeTempo(10 * kNativeBytesPerSecond, 120);
    EXPECT_EQ(clock.songBytes(20 * kNativeBytesPerSecond), 20 * kNativeBytesPerSecond);
    // A new run starts from its own device zero.
    clock.startRun(kFullTempo);
    EXPECT_EQ(clock.songBytes(12345), 12345u);
}

}  // namespace
}  // namespace tunebox
