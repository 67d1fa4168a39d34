// The accompaniment's PLAY, PAUSE and STOP and its position, and the
// audition of the take, through the simulated sound card.

#include "session/position_time.h"
#include "session/take_harness.h"

namespace tunebox::test {
namespace {

constexpr uint32_t kSecond = 176400;

class TakePlayerTest : public TakeTest {
  protected:
    // Stops the simulated clock late in a second of playback and says how
    // much had been heard then; 0 when that moment kept slipping past.
    uint32_t stallLateInASecond() {
        WaveCtl& player = controller().accompanimentPlayer();
        const auto late = [&] { return player.wavGetDevicePosition() % kSecond > 0.6 * kSecond; };
        for (int attempt = 0; attempt < 10; ++attempt) {
            runUntil(late);
            audio_->setClockStalled(true);
            if (late()) {
                return player.wavGetDevicePosition();
            }
            audio_->setClockStalled(false);
        }
        return 0;
    }
    // The accompaniment player's own idea of where it is, in bytes.
    uint32_t enginePosition() {
        uint32_t minutes = 0, seconds = 0, frames = 0;
        controller().accompanimentPlayer().wavGetTime(minutes, seconds, frames);
        return (minutes * 4500 + seconds * 75 + frames) * 2352;
    }
};

TEST_F(TakePlayerTest, PlayWithNoTrackDoesNothing) {
    startAudio(1);
    EXPECT_EQ(controller().playAccompaniment(std::nullopt), PlayStart::kNoTrack);
    EXPECT_EQ(controller().accompaniment().state, kIdle);
    EXPECT_TRUE(shown_.faces.empty());
    EXPECT_EQ(controller().accompanimentPlayer().state(), kPlayerStopped);
}

// How a failed start has always looked: the PLAY face lit over an idle player.
TEST_F(TakePlayerTest, AFailedStartLeavesThePlayFaceLit) {
    startAudio(1);
    TrackEntry missing;
    missing.path = (dir_.path() / "gone.wav").string();
    missing.length = kSecond;
    EXPECT_EQ(controller().playAccompaniment(missing), PlayStart::kOpenFailed);
    EXPECT_EQ(controller().accompaniment().state, kIdle);
    EXPECT_TRUE(shown_.faces[TakeButton::kAccompanimentPlay]);
    EXPECT_FALSE(shown_.ticking[TakePlayer::kAccompaniment]);
}

// Paused late in a second, where a clock rounded to whole seconds would read
// a second ahead: the kept position is what had been heard, and PLAY goes
// on from there through a fresh open.
TEST_F(TakePlayerTest, PauseKeepsWhereItWasHeardAndPlayReopensFromThere) {
    startAudio(2);
    const TrackEntry track = song(20);
    ASSERT_EQ(controller().playAccompaniment(track), PlayStart::kStarted);
    EXPECT_TRUE(shown_.faces[TakeButton::kAccompanimentPlay]);
    EXPECT_TRUE(shown_.ticking[TakePlayer::kAccompaniment]);
    WaveCtl& player = controller().accompanimentPlayer();
    ASSERT_TRUE(runUntil([&] { return player.wavGetDevicePosition() > 3 * kSecond; }));
    const uint32_t heard = stallLateInASecond();
    ASSERT_GT(heard, 0u);

    controller().pauseAccompaniment();
    audio_->setClockStalled(false);
    EXPECT_EQ(controller().accompaniment().state, kIdle);
    EXPECT_EQ(player.state(), kPlayerStopped);
    EXPECT_TRUE(shown_.faces[TakeButton::kAccompanimentPlay]) << "paused as the audition shows it";
    EXPECT_TRUE(shown_.faces[TakeButton::kAccompanimentPause]);
    EXPECT_FALSE(shown_.ticking[TakePlayer::kAccompaniment]);
    EXPECT_EQ(controller().accompaniment().position, heard);
    EXPECT_EQ(shown_.accompaniment.position, heard);

    ASSERT_EQ(controller().playAccompaniment(track), PlayStart::kStarted);
    EXPECT_FALSE(shown_.faces[TakeButton::kAccompanimentPause]);
    runFor(std::chrono::milliseconds(600));
    EXPECT_GE(controller().accompaniment().position, heard) << "a fresh open at the kept position";
    EXPECT_LT(controller().accompaniment().position, heard + 2 * kSecond) << "a tick later";
}

TEST_F(TakePlayerTest, PauseWhenIdleOnlyResetsTheFaces) {
    startAudio(1);
    controller().pauseAccompaniment();
    EXPECT_EQ(controller().accompaniment().state, kIdle);
    EXPECT_EQ(controller().accompaniment().position, 0u);
    EXPECT_FALSE(shown_.faces.at(TakeButton::kAccompanimentPlay));
    EXPECT_FALSE(shown_.faces.at(TakeButton::kAccompanimentPause));
}

TEST_F(TakePlayerTest, TrackbarSetsTheNextStartOnlyWhileStopped) {
    startAudio(2);
    const TrackEntry track = song(20);
    controller().playAccompaniment(track);
    ASSERT_TRUE(runUntil([&] { return enginePosition() > kSecond; }));
    controller().moveTrackbar(TakePlayer::kAccompaniment, false, 4000);
    EXPECT_EQ(controller().accompaniment().position, 8 * kSecond) << "the move shows at once";
    ASSERT_TRUE(runUntil([&] { return controller().accompaniment().position < 6 * kSecond; },
                         std::chrono::seconds(2)))
        << "the next tick takes the engine's position back";
    EXPECT_LT(enginePosition(), 6 * kSecond) << "the engine was never moved";

    controller().stopAccompaniment(true);
    EXPECT_EQ(controller().accompaniment().position, 0u);
    EXPECT_EQ(shown_.accompaniment.trackbar, 0);
    controller().moveTrackbar(TakePlayer::kAccompaniment, true, 12000);
    EXPECT_EQ(controller().accompaniment().dragged, 1);
    EXPECT_EQ(controller().accompaniment().position, track.length) << "held to the end";
    controller().moveTrackbar(TakePlayer::kAccompaniment, false, 5000);
    EXPECT_EQ(controller().accompaniment().position, track.length / 2);
    controller().playAccompaniment(track);
    EXPECT_GE(enginePosition(), track.length / 2 - 2352);
    EXPECT_LT(enginePosition(), track.length / 2 + 2 * kSecond);
}

// PLAY of a take that plays marks the accompaniment, which nobody reads; REC
// waits for the audition to stop.
TEST_F(TakePlayerTest, TheAuditionPlaysPausesAndKeepsRecOut) {
    startAudio(4);
    writeTone(take_, 20);
    EXPECT_EQ(controller().playRecorded(), PlayStart::kStarted);
    ASSERT_EQ(controller().recorded().state, kPlaying);
    EXPECT_EQ(controller().recorded().length, 20 * kSecond);
    EXPECT_TRUE(shown_.faces[TakeButton::kRecordedPlay]);
    controller().playRecorded();
    EXPECT_EQ(controller().accompaniment().restartMarker, 1);

    EXPECT_FALSE(controller().rec(RecordRequest{}).capturing);
    EXPECT_FALSE(controller().captureActive());

    ASSERT_TRUE(runUntil([&] { return shown_.recordedPosition > kSecond; }))
        << "the audition's time moves as it plays";
    EXPECT_GE(controller().recorded().position, shown_.recordedPosition);

    controller().pauseRecorded();
    EXPECT_EQ(controller().recorded().state, kPaused);
    EXPECT_TRUE(shown_.faces[TakeButton::kRecordedPlay]);
    EXPECT_TRUE(shown_.faces[TakeButton::kRecordedPause]);
    controller().playRecorded();
    EXPECT_EQ(controller().recorded().state, kPlaying) << "PLAY resumes a paused audition";
    EXPECT_FALSE(shown_.faces[TakeButton::kRecordedPause]);

    controller().stopRecorder();
    EXPECT_EQ(controller().recorded().state, kIdle);
    EXPECT_EQ(shown_.recordedTrackbar, 0);
    EXPECT_EQ(shown_.recordedPosition, 0u);
    EXPECT_FALSE(shown_.ticking[TakePlayer::kRecorded]);
}

// The owner is told which of the two failed, to say what to do about it.
TEST_F(TakePlayerTest, AnAuditionOfNoTakeFailsToOpen) {
    startAudio(4);
    EXPECT_EQ(controller().playRecorded(), PlayStart::kOpenFailed);
    EXPECT_EQ(controller().recorded().state, kIdle);
    EXPECT_FALSE(shown_.faces[TakeButton::kRecordedPlay]);
}

TEST_F(TakePlayerTest, AnAuditionWithoutASoundOutputFailsOnTheDevice) {
    startAudio(4, {.failOutputOpen = true});
    writeTone(take_, 2);
    EXPECT_EQ(controller().playRecorded(), PlayStart::kDeviceFailed);
}

}  // namespace
}  // namespace tunebox::test
