// REC, the level monitor, the recorder's STOP and takes that a fault cuts
// short, through the simulated sound card.

#include "session/take_harness.h"
#include "support/file_size_limit.h"
#include "support/test_files.h"

namespace tunebox::test {
namespace {

constexpr uint32_t kSecond = 176400;
constexpr uint32_t kWavHeaderBytes = 44;

class TakeRecordingTest : public TakeTest {
  protected:
    void expectFinishedTake(uint32_t& length) {
        ASSERT_EQ(wavGetLength(take_, length), 1);
        EXPECT_EQ(readBytes(take_).size(), kWavHeaderBytes + length) << "sizes written at close";
    }
};

TEST_F(TakeRecordingTest, RecWithTheMonitorOnSwitchesToRecordingInOnePress) {
    startAudio(1);
    const TrackEntry track = song(20);
    ASSERT_EQ(controller().toggleMonitor(0), 1);
    EXPECT_TRUE(shown_.faces[TakeButton::kMonitor]);
    EXPECT_EQ(controller().capture().state(), kRecCapturing);
    runFor(std::chrono::milliseconds(100));

    const RecStart started = controller().rec({track, 0, 0});
    EXPECT_TRUE(started.capturing);
    EXPECT_EQ(started.accompaniment, PlayStart::kStarted);
    EXPECT_EQ(controller().monitorOn(), 0);
    EXPECT_FALSE(shown_.faces[TakeButton::kMonitor]);
    EXPECT_TRUE(shown_.faces[TakeButton::kRecord]);
    EXPECT_EQ(controller().accompaniment().state, kPlaying);
    EXPECT_TRUE(shown_.startShown);
    // The simulated singer follows the accompaniment.
    ASSERT_TRUE(runUntil([&] { return shown_.levelsSeen; }, std::chrono::seconds(5)));

    controller().stopRecorder();
    EXPECT_FALSE(controller().captureActive());
    EXPECT_EQ(controller().accompaniment().state, kIdle);
    EXPECT_FALSE(shown_.faces[TakeButton::kRecord]);
    EXPECT_EQ(shown_.stops, 1);
    EXPECT_EQ(shown_.first, 0) << "the meter is cleared when capture stops";
    EXPECT_EQ(shown_.second, 0);
}

TEST_F(TakeRecordingTest, AccompanimentEndFinishesTheTakeWhichThenPlaysBack) {
    startAudio(4);
    const TrackEntry track = song(3);
    ASSERT_TRUE(controller().rec({track, 0, 0}).capturing);
    ASSERT_TRUE(runUntil([&] { return !controller().captureActive(); }));
    EXPECT_EQ(controller().accompaniment().state, kIdle);
    EXPECT_FALSE(shown_.faces[TakeButton::kRecord]);
    EXPECT_FALSE(shown_.faces[TakeButton::kAccompanimentPlay]);

    uint32_t length = 0;
    expectFinishedTake(length);
    EXPECT_GT(length, 2 * kSecond);
    EXPECT_LE(length, 4 * kSecond);
    EXPECT_EQ(shown_.accompaniment.delay, controller().capture().syncMx().alignedDelay())
        << "the delay the take was lined up with, not one measured after the song's end";

    controller().playRecorded();
    EXPECT_EQ(controller().recorded().state, kPlaying);
    EXPECT_EQ(controller().recorded().length, length);
    ASSERT_TRUE(runUntil([&] { return controller().recorded().state == kIdle; }));
    EXPECT_FALSE(shown_.faces[TakeButton::kRecordedPlay]);
}

// The voice alone has no accompaniment to time it: the capture does, on
// the accompaniment's tick, which then has no player's end to look for.
TEST_F(TakeRecordingTest, AVoiceAloneTakeCountsItsTime) {
    startAudio(4);
    ASSERT_TRUE(controller().rec(RecordRequest{}).capturing);
    EXPECT_TRUE(shown_.ticking[TakePlayer::kAccompaniment]);
    ASSERT_TRUE(runUntil([&] { return shown_.accompaniment.position > 2 * kSecond; }));
    EXPECT_TRUE(controller().captureActive());

    controller().stopRecorder();
    EXPECT_FALSE(shown_.ticking[TakePlayer::kAccompaniment]);
    EXPECT_EQ(shown_.accompaniment.position, 0u) << "back to where the song would start";
}

// The loud singer over the tone overshoots full scale: each clipped block
// is told as it is written, and the finished take says how many there were.
TEST_F(TakeRecordingTest, ClippedBlocksAreToldAsTheyComeAndCountedAtTheEnd) {
    startAudio(4);
    ASSERT_TRUE(controller().rec({song(3), 0, 0}).capturing);
    ASSERT_TRUE(runUntil([&] { return !controller().captureActive(); }));
    ASSERT_EQ(shown_.takesEnded.size(), 1u);
    EXPECT_GT(shown_.takesEnded[0], 0u);
    EXPECT_EQ(shown_.takesEnded[0], shown_.clipNotices);
}

TEST_F(TakeRecordingTest, AQuietTakeCountsNoClipping) {
    startAudio(4, {.loopbackGain = 0.25f, .voice = tone(60, 220, 4000, 4000)});
    ASSERT_TRUE(controller().rec({song(3), 0, 0}).capturing);
    ASSERT_TRUE(runUntil([&] { return !controller().captureActive(); }));
    EXPECT_EQ(shown_.takesEnded, std::vector<uint32_t>{0});
    EXPECT_EQ(shown_.clipNotices, 0u);
}

// Nobody presses STOP: the fault is told once, the owner ends the take, and
// the file is finished with what fitted; with the song or the voice alone.
class FullDiskTest : public TakeRecordingTest, public ::testing::WithParamInterface<bool> {};

TEST_P(FullDiskTest, EndsTheTakeAtOnceWithAFinishedFile) {
    constexpr rlim_t kDiskBytes = 300 * 1024;
    startAudio(4);
    RecordRequest request;
    if (GetParam()) {
        request.track = song(20);
    }
    {
        const FileSizeLimit disk(kDiskBytes);
        ASSERT_TRUE(controller().rec(request).capturing);
        ASSERT_TRUE(
            runUntil([&] { return !controller().captureActive(); }, std::chrono::seconds(10)));
    }
    ASSERT_EQ(shown_.faults, std::vector{CaptureFault::kOutputWrite});
    EXPECT_TRUE(keptRecording_);
    EXPECT_EQ(controller().accompaniment().state, kIdle);
    EXPECT_FALSE(shown_.faces[TakeButton::kRecord]);
    uint32_t length = 0;
    expectFinishedTake(length);
    EXPECT_GT(length, 0u);
    EXPECT_LE(kWavHeaderBytes + length, kDiskBytes);
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutTheSong, FullDiskTest, ::testing::Bool());

// A microphone that goes quiet is found out after 2 seconds without anyone
// pressing STOP: one message, and a finished file that holds everything
// captured before the hang; with the song or the voice alone.
class LostMicrophoneTest : public TakeRecordingTest, public ::testing::WithParamInterface<bool> {};

TEST_P(LostMicrophoneTest, EndsTheTakeWithAFinishedFileAndOneMessage) {
    startAudio(4);
    RecordRequest request;
    if (GetParam()) {
        request.track = song(20);
    }
    ASSERT_TRUE(controller().rec(request).capturing);
    ASSERT_TRUE(runUntil([&] { return controller().capture().capturePosition() > 2 * kSecond; }));
    const uint32_t capturedBeforeHang = controller().capture().capturePosition();
    audio_->setInputHangs(true);
    ASSERT_TRUE(runUntil([&] { return !controller().captureActive(); }));

    ASSERT_EQ(shown_.faults, std::vector{CaptureFault::kInputDevice});
    EXPECT_TRUE(keptRecording_);
    EXPECT_EQ(controller().accompaniment().state, kIdle);
    EXPECT_FALSE(shown_.faces[TakeButton::kRecord]);
    uint32_t length = 0;
    expectFinishedTake(length);
    const int32_t dropped = std::max(controller().capture().syncMx().alignedDelay(), 0);
    EXPECT_GE(length, capturedBeforeHang - static_cast<uint32_t>(dropped));
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutTheSong, LostMicrophoneTest, ::testing::Bool());

}  // namespace
}  // namespace tunebox::test
