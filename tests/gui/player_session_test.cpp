// PLAY, STOP, PAUSE and the position trackbar of the accompaniment player,
// through the simulated sound card.

#include <QTreeWidget>

#include "app/settings.h"
#include "gui/session_fixture.h"

namespace tunebox::test {
namespace {

using namespace gui;

class PlayerSessionTest : public SessionTest {};

TEST_F(PlayerSessionTest, PlayWithNoFilePickedDoesNothing) {
    start(2, 1);
    MainDialog fresh(desktop_.services());
    QTest::mouseClick(fresh.findChild<QWidget*>(controlName(kKaraokePlay)), Qt::LeftButton);
    EXPECT_EQ(fresh.karaokeStatus().state, kIdle);
    EXPECT_EQ(fresh.findChild<ImageButton*>(controlName(kKaraokePlay))->face(), kFacePlay);
    EXPECT_EQ(fresh.karaokePlayer().state(), kPlayerStopped);
}

TEST_F(PlayerSessionTest, PauseKeepsThePositionAndPlayReopensFromIt) {
    start(20, 2);
    click(kKaraokePlay);
    ASSERT_EQ(karaoke().state, kPlaying);
    EXPECT_EQ(face(kKaraokePlay), kFacePlaying);
    ASSERT_TRUE(waitFor([&] { return enginePosition() > 3 * 176400; }));
    QTest::qWait(600);  // one tick of the time display
    saveScreenshot(*dialog_, "playing");

    click(kKaraokePause);
    EXPECT_EQ(karaoke().state, kIdle);
    EXPECT_EQ(dialog_->karaokePlayer().state(), kPlayerStopped);
    EXPECT_EQ(face(kKaraokePlay), kFacePlay);
    EXPECT_EQ(face(kKaraokePause), kFacePause);
    const uint32_t kept = karaoke().position;
    EXPECT_GT(kept, 3u * 176400);

    click(kKaraokePlay);
    ASSERT_EQ(karaoke().state, kPlaying);
    // The player's clock rounds to whole seconds and keeps the frames of the
    // fraction, so it may read up to one second ahead of the true position.
    EXPECT_GE(enginePosition(), kept - 2352) << "a fresh open at the kept position";
    EXPECT_LT(enginePosition(), kept + 2 * 176400);
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
