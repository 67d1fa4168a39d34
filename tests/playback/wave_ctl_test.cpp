#include "playback/wave_ctl.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "core/heap.h"
#include "core/playback_clock.h"
#include "support/log_records.h"
#include "support/loopback_listener.h"
#include "support/player_support.h"
#include "support/source_reading.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

using test::initPlayer;
using test::LoopbackListener;
using test::patternBytes;
using test::waitUntil;
using test::writeWav;

constexpr uint32_t kBuffer = kEngineBlockBytes;

class WaveCtlTest : public ::testing::Test {
  protected:
    std::string fileOf(const std::vector<uint8_t>& data) {
        const auto path = dir_ / ("take" + std::to_string(files_++) + ".wav");
        EXPECT_TRUE(writeWav(path, data));
        return path.string();
    }

    // Plays `data` from its start to the end the player finds by itself and
    // returns what the device played, watching the ring all the while.
    std::vector<uint8_t> playToEnd(const std::vector<uint8_t>& data) {
        return playFileToEnd(fileOf(data), static_cast<uint32_t>(data.size()));
    }

    std::vector<uint8_t> playFileToEnd(const std::string& path, uint32_t length) {
        LoopbackListener listener(*audio_, 8);
        EXPECT_TRUE(listener.listening());
        WaveCtl player(*audio_);
        initPlayer(player);
        EXPECT_EQ(player.wavOpenFile(path, 0, length), 1);
        EXPECT_EQ(player.wavPlay(), 1);
        uint32_t mostFilled = 0;
        int32_t mostOutstanding = 0;
        EXPECT_TRUE(waitUntil([&] { return player.wavIsStopped() == 1; }, std::chrono::seconds(20),
                              [&] {
                                  mostFilled = std::max(mostFilled, player.filledCount());
                                  mostOutstanding =
                                      std::max(mostOutstanding, player.outstandingCount());
                              }));
        EXPECT_LE(mostFilled, 2u);  // count - 1
        EXPECT_LE(mostOutstanding, 3);
        return listener.heard();
    }

    std::shared_ptr<VirtualAudio> audio_ =
        std::make_shared<VirtualAudio>(VirtualAudioConfig{.speed = 20});
    test::TempDir dir_;
    int files_ = 0;
};

::testing::AssertionResult samePrefix(const std::vector<uint8_t>& heard,
                                      const std::vector<uint8_t>& data, std::size_t length) {
    if (heard.size() != length) {
        return ::testing::AssertionFailure()
               << "heard " << heard.size() << " bytes, not " << length;
    }
    const auto differ = std::mismatch(heard.begin(), heard.end(), data.begin());
    if (differ.first != heard.end()) {
        return ::testing::AssertionFailure()
               << "first difference at byte " << (differ.first - heard.begin());
    }
    return ::testing::AssertionSuccess();
}

// Five and a half buffers: the two of the prefill and three refills play;
// the refill that reaches the end is not played at all.
TEST_F(WaveCtlTest, BytesReachTheDeviceInOrderUntilTheBlockThatReachesTheEnd) {
    const auto data = patternBytes(kBuffer * 11 / 2);
    EXPECT_TRUE(samePrefix(playToEnd(data), data, 5 * kBuffer));
}

TEST_F(WaveCtlTest, AFileShorterThanOneBufferPlaysWholeAndEnds) {
    const auto data = patternBytes(10000);
    EXPECT_TRUE(samePrefix(playToEnd(data), data, data.size()));
}

// A resampled source delivers its length give or take a frame; the player
// finds its end either way, and a short one plays whole, its tail included.
TEST_F(WaveCtlTest, ConvertedFilesPlayToTheirEnd) {
    for (const char* seconds : {"0.3", "2.2"}) {
        SCOPED_TRACE(seconds);
        const std::string path = test::synthesise(dir_ / (std::string(seconds) + ".wav"), 22050, 1,
                                                  std::string("synth ") + seconds + " sine 300");
        test::Opened opened;
        ASSERT_TRUE(test::open(path, opened));
        const auto whole = test::readAll(opened, kBuffer);
        EXPECT_NEAR(double(whole.size()), double(opened.length), 4.0);
        const auto heard = playFileToEnd(path, opened.length);
        ASSERT_LE(heard.size(), whole.size());
        EXPECT_GE(heard.size() + kBuffer, whole.size());
        EXPECT_TRUE(samePrefix(heard, whole, heard.size()));
        if (whole.size() < kBuffer) {
            EXPECT_EQ(heard, whole);
        }
    }
}

// The arithmetic is the clock's; a start off a frame shows the player uses it.
TEST_F(WaveCtlTest, StartPositionsOffAFrameMoveOnByTheirLowBits) {
    WaveCtl player(*audio_);
    initPlayer(player);
    ASSERT_EQ(player.wavOpenFile(fileOf(patternBytes(4 * kBuffer)), 3, 4 * kBuffer), 1);
    EXPECT_EQ(player.seekPosition(), 6u);
    EXPECT_EQ(player.readPosition(), 6 + 2 * kBuffer);
}

TEST_F(WaveCtlTest, PausingThenSeekingStaysPausedAtTheNewPlaceAndPlaysOnFromThere) {
    const uint32_t length = 10 * kNativeBytesPerSecond;
    WaveCtl player(*audio_);
    initPlayer(player);
    ASSERT_EQ(player.wavOpenFile(fileOf(patternBytes(length)), 0, length), 1);
    ASSERT_EQ(player.wavPlay(), 1);
    ASSERT_TRUE(waitUntil([&] { return player.wavGetDevicePosition() > 0; }));
    player.wavPause(1);
    player.wavSeekSlider(5000);
    EXPECT_EQ(player.state(), kPlayerPaused);
    EXPECT_EQ(player.seekPosition(), length / 2);
    EXPECT_EQ(player.wavGetSliderPos(), 5000u);
    const uint32_t standing = player.wavGetDevicePosition();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // 2 s of virtual time
    EXPECT_EQ(player.wavGetDevicePosition(), standing);

    player.wavPause(0);
    EXPECT_EQ(player.state(), kPlayerPlaying);
    EXPECT_TRUE(waitUntil([&] { return player.wavIsStopped() == 1; }));
}

TEST_F(WaveCtlTest, TheSliderAtItsEndStopsThePlayer) {
    const uint32_t length = 4 * kBuffer;
    WaveCtl player(*audio_);
    initPlayer(player);
    ASSERT_EQ(player.wavOpenFile(fileOf(patternBytes(length)), 0, length), 1);
    ASSERT_EQ(player.wavPlay(), 1);
    player.wavSeekSlider(10000);
    EXPECT_EQ(player.wavIsStopped(), 1);
    EXPECT_EQ(player.readPosition(), length);
    uint32_t minutes = 0, seconds = 0, frames = 0;
    EXPECT_EQ(player.wavGetTime(minutes, seconds, frames), -1);
    EXPECT_EQ(player.wavGetSliderPos(), 0u);
}

TEST_F(WaveCtlTest, OneSecondStepsMoveTheReadPositionAndForwardPastTheEndStops) {
    const uint32_t length = 3 * kNativeBytesPerSecond;
    WaveCtl player(*audio_);
    initPlayer(player);
    ASSERT_EQ(player.wavOpenFile(fileOf(patternBytes(length)), 0, length), 1);
    ASSERT_EQ(player.readPosition(), 2 * kBuffer);
    player.wavStepBack();
    EXPECT_EQ(player.readPosition(), 2 * kBuffer - kNativeBytesPerSecond);
    player.wavStepBack();
    EXPECT_EQ(player.readPosition(), 0u);
    player.wavStepForward();
    EXPECT_EQ(player.readPosition(), kNativeBytesPerSecond);

    audio_->setClockStalled(true);  // no tick reads on meanwhile
    ASSERT_EQ(player.wavPlay(), 1);
    player.wavStepForward();
    EXPECT_EQ(player.wavIsStopped(), 0);
    player.wavStepForward();
    EXPECT_EQ(player.wavIsStopped(), 1);
    EXPECT_EQ(player.readPosition(), length);
    audio_->setClockStalled(false);
}

// The clock's rounding is its own test's; here the player hands it the run's
// start (2 s, not 0) and the device position, read while the clock stands
// still.
TEST_F(WaveCtlTest, ClockAndSliderFollowTheDevicePositionFromTheRunStart) {
    const uint32_t length = 8 * kNativeBytesPerSecond;
    const uint32_t start = 2 * kNativeBytesPerSecond;
    WaveCtl player(*audio_);
    initPlayer(player);
    ASSERT_EQ(player.wavOpenFile(fileOf(patternBytes(length)), start, length), 1);
    ASSERT_EQ(player.wavPlay(), 1);
    ASSERT_TRUE(waitUntil([&] { return player.wavGetDevicePosition() >= kNativeBytesPerSecond; }));
    audio_->setClockStalled(true);
    const uint32_t device = player.wavGetDevicePosition();
    const ClockTime expected = clockTime(start, device, kNativeBytesPerSecond, 0);
    uint32_t minutes = 9, seconds = 9, frames = 99;
    ASSERT_EQ(player.wavGetTime(minutes, seconds, frames), 1);
    EXPECT_EQ(seconds, expected.seconds);
    EXPECT_EQ(frames, expected.frames);
    EXPECT_EQ(player.wavGetSliderPos(),
              sliderPosition(start, device, kNativeBytesPerSecond, 0, length));
    audio_->setClockStalled(false);
    player.wavStop();
    EXPECT_EQ(player.wavIsStopped(), 1);
}

TEST_F(WaveCtlTest, AFailedBufferLeavesTheFewThatCameAndNothingPlays) {
    test::LogDirectory log;
    WaveCtl player(*audio_);
    heapFailAfter(1);
    initPlayer(player);
    heapFailAfter(-1);
    EXPECT_EQ(player.bufferCount(), 1);
    EXPECT_EQ(log.messages(),
              std::vector<std::string>{"ﾒﾓﾘ確保失敗:wavInit→WaveCtl.WaveBuf[i].pwh.lpData"});
    ASSERT_EQ(player.wavOpenFile(fileOf(patternBytes(kBuffer)), 0, kBuffer), 1);
    EXPECT_EQ(player.filledCount(), 0u);
    EXPECT_EQ(player.readPosition(), 0u);
}

// Each player plays through the backend it was given and nowhere else.
TEST_F(WaveCtlTest, TwoBackendsInOneProcessKeepTheirPlayersApart) {
    VirtualAudio other({.speed = 20});
    LoopbackListener here(*audio_, 4);
    LoopbackListener there(other, 4);
    ASSERT_TRUE(here.listening() && there.listening());
    const auto data = patternBytes(kBuffer);
    WaveCtl player(other);
    initPlayer(player);
    ASSERT_EQ(player.wavOpenFile(fileOf(data), 0, kBuffer), 1);
    ASSERT_EQ(player.wavPlay(), 1);
    EXPECT_TRUE(waitUntil([&] { return player.wavIsStopped() == 1; }));
    EXPECT_TRUE(here.heard().empty());
    EXPECT_TRUE(samePrefix(there.heard(), data, data.size()));
}

TEST(WaveCtl, ADeviceThatWillNotOpenIsReportedAndLeavesNoClock) {
    VirtualAudio audio({.failOutputOpen = true});
    test::TempDir dir;
    ASSERT_TRUE(writeWav(dir / "a.wav", patternBytes(kBuffer)));
    WaveCtl player(audio);
    initPlayer(player);
    ASSERT_EQ(player.wavOpenFile((dir / "a.wav").string(), 0, kBuffer), 1);
    EXPECT_EQ(player.wavPlay(), 0);
    EXPECT_FALSE(player.lastDeviceError().empty());
    uint32_t minutes = 0, seconds = 0, frames = 0;
    EXPECT_EQ(player.wavGetTime(minutes, seconds, frames), -1);
    EXPECT_EQ(player.wavGetDevicePosition(), 0u);
    EXPECT_EQ(player.wavOpenFile((dir / "missing.wav").string(), 0, kBuffer), 0);
}

}  // namespace
}  // namespace tunebox
