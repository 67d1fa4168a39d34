// PLAY, STOP, PAUSE and the position trackbar of the accompaniment player,
// through the simulated sound card.

#include <QTreeWidget>

#include "app/gui/position_time.h"
#include "platform/settings.h"
#include "gui/session_fixture.h"

namespace tunebox::test {
namespace {

using namespace gui;

class PlayerSessionTest : public SessionTest {
  protected:
    // Stops the simulated clock late in a second of playback and says how
    // much had been heard then; 0 when that moment kept slipping past.
    uint32_t stallLateInASecond(WaveCtl& player) {
        const auto late = [&] { return player.wavGetDevicePosition() % 176400 > 0.6 * 176400; };
        for (int attempt = 0; attempt < 10; ++attempt) {
            waitFor(late);
            audio_->setClockStalled(true);
            if (late()) {
                return player.wavGetDevicePosition();
            }
            audio_->setClockStalled(false);
        }
        return 0;
    }
};

TEST_F(PlayerSessionTest, PlayWithNoFilePickedDoesNothing) {
    start(2, 1);
    MainDialog fresh(desktop_.services());
    QTest::mouseClick(fresh.findChild<QWidget*>(controlName(kKaraokePlay)), Qt::LeftButton);
    EXPECT_EQ(fresh.karaokeStatus().state, kIdle);
    EXPECT_EQ(fresh.findChild<ImageButton*>(controlName(kKaraokePlay))->face(), kFacePlay);
    EXPECT_EQ(fresh.karaokePlayer().state(), kPlayerStopped);
}

// Paused late in a second, where a clock rounded to whole seconds would read
// a second ahead: the kept position is what had been heard, and PLAY goes
// on from there.
TEST_F(PlayerSessionTest, PauseKeepsWhereItWasHeardAndPlayReopensFromThere) {
    start(20, 2);
    click(kKaraokePlay);
    ASSERT_EQ(karaoke().state, kPlaying);
    EXPECT_EQ(face(kKaraokePlay), kFacePlaying);
    WaveCtl& player = dialog_->karaokePlayer();
    ASSERT_TRUE(waitFor([&] { return player.wavGetDevicePosition() > 3 * 176400; }));
    QTest::qWait(600);  // one tick of the time display
    saveScreenshot(*dialog_, "playing");
    const uint32_t heard = stallLateInASecond(player);
    ASSERT_GT(heard, 0u);

    click(kKaraokePause);
    audio_->setClockStalled(false);
    EXPECT_EQ(karaoke().state, kIdle);
    EXPECT_EQ(player.state(), kPlayerStopped);
    EXPECT_EQ(face(kKaraokePlay), kFacePlay);
    EXPECT_EQ(face(kKaraokePause), kFacePause);
    EXPECT_EQ(karaoke().position, heard);
    EXPECT_EQ(control<QLabel>(kTimeText)->text().toStdString(), gui::formatPositionTime(heard));

    click(kKaraokePlay);
    ASSERT_EQ(karaoke().state, kPlaying);
    QTest::qWait(600);
    EXPECT_GE(karaoke().position, heard) << "a fresh open at the kept position";
    EXPECT_LT(karaoke().position, heard + 2 * 176400) << "a tick later, a tick on";
}

TEST_F(PlayerSessionTest, PickingAnotherFileReplacesTheOnlyEntry) {
    start(2, 1);
    const auto other = (configDir() / "other.wav").string();
    writeTone(other, 4);
    desktop_.openAnswer = {QString::fromStdString(other)};
    click(kKaraokePick);
    const auto* list = control<QTreeWidget>(kTrackListView);
    ASSERT_EQ(list->topLevelItemCount(), 1);
    EXPECT_EQ(list->topLevelItem(0)->text(1).toStdString(), other);
    EXPECT_EQ(dialog_->currentIndex(), 0);
    EXPECT_EQ(karaoke().length, 4u * 176400);
    EXPECT_EQ(control<QLineEdit>(kKaraokeName)->text().toStdString(), other);
    EXPECT_EQ(readFolder(FolderPicker::kKaraoke), configDir().string() + "/");
}

TEST_F(PlayerSessionTest, PauseWhenIdleOnlyResetsTheImages) {
    start(2, 1);
    control<ImageButton>(kKaraokePause)->setFace(kFacePaused);
    control<ImageButton>(kKaraokePlay)->setFace(kFacePlaying);
    click(kKaraokePause);
    EXPECT_EQ(karaoke().state, kIdle);
    EXPECT_EQ(karaoke().position, 0u);
    EXPECT_EQ(face(kKaraokePlay), kFacePlay);
    EXPECT_EQ(face(kKaraokePause), kFacePause);
}

TEST_F(PlayerSessionTest, TrackbarSetsTheNextStartOnlyWhileStopped) {
    start(20, 2);
    auto* trackbar = control<PositionTrackbar>(kKaraokeTrackbar);
    click(kKaraokePlay);
    ASSERT_TRUE(waitFor([&] { return enginePosition() > 176400; }));
    for (int i = 0; i < 40; ++i) {
        trackbar->triggerAction(QAbstractSlider::SliderPageStepAdd);
    }
    EXPECT_GT(karaoke().position, 7u * 176400) << "the move shows at once";
    ASSERT_TRUE(waitFor([&] { return karaoke().position < 6u * 176400; }, 2000))
        << "the next tick takes the engine's position back";
    EXPECT_LT(enginePosition(), 6u * 176400) << "the engine was never moved";

    click(kKaraokeStop);
    EXPECT_EQ(karaoke().position, 0u);
    EXPECT_EQ(trackbar->value(), 0);
    trackbar->setSliderDown(true);
    trackbar->setSliderPosition(5000);
    trackbar->setSliderDown(false);
    EXPECT_EQ(karaoke().position, karaoke().length / 2);
    EXPECT_EQ(control<QLabel>(kTimeText)->text(), "00:10:00");
    click(kKaraokePlay);
    EXPECT_GE(enginePosition(), karaoke().length / 2 - 2352);
    EXPECT_LT(enginePosition(), karaoke().length / 2 + 2 * 176400);
}

}  // namespace
}  // namespace tunebox::test
