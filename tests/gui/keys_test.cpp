// The keyboard drives a session as the buttons do, and no key ends a take
// by accident: Escape is ignored during one, and closing the window asks.

#include "gui/session_fixture.h"
#include "playback/wav_repair.h"

namespace tunebox::test {
namespace {

using namespace gui;

class KeysTest : public SessionTest {
  protected:
    void startActive() {
        start(20, 4);
        activate();
    }
    bool recording() { return controller().captureActive() && dialog_->monitorOn() == 0; }
};

TEST_F(KeysTest, SpaceRAndSPlayPauseRecordAndStop) {
    startActive();
    press(Qt::Key_Space);
    EXPECT_EQ(karaoke().state, kPlaying);
    ASSERT_TRUE(waitFor([&] { return karaoke().position > 0; }));
    press(Qt::Key_Space);
    EXPECT_NE(karaoke().state, kPlaying);
    const uint32_t kept = karaoke().position;
    EXPECT_GT(kept, 0u) << "paused where it was";
    press(Qt::Key_Space);
    EXPECT_EQ(karaoke().state, kPlaying);
    press(Qt::Key_S);
    EXPECT_EQ(karaoke().state, kIdle);

    press(Qt::Key_R);
    ASSERT_TRUE(recording());
    EXPECT_EQ(face(kRecord), kFaceRecording);
    QTest::qWait(200);
    press(Qt::Key_S);
    EXPECT_FALSE(controller().captureActive());
    EXPECT_EQ(inspectWav(take_).condition, WavCondition::kFinished);
}

// The letters and the space go into a text box that has the focus.
TEST_F(KeysTest, ATextBoxKeepsTheKeysTypedIntoIt) {
    startActive();
    auto* name = control<QLineEdit>(kRecordedName);
    name->setFocus();
    name->clear();
    QTest::keyClicks(name, "rs s.wav");
    EXPECT_EQ(name->text(), "rs s.wav");
    EXPECT_FALSE(controller().captureActive());
    EXPECT_EQ(karaoke().state, kIdle);
}

TEST_F(KeysTest, EscapeNeverEndsATakeAndClosingAsksFirst) {
    startActive();
    press(Qt::Key_R);
    ASSERT_TRUE(recording());
    press(Qt::Key_Escape);
    EXPECT_TRUE(recording());
    EXPECT_TRUE(dialog_->isVisible());

    desktop_.yesAnswer = false;
    dialog_->close();
    EXPECT_EQ(desktop_.questions.size(), 1);
    EXPECT_TRUE(recording()) << "no keeps singing";
    EXPECT_TRUE(dialog_->isVisible());

    desktop_.yesAnswer = true;
    dialog_->close();
    EXPECT_EQ(desktop_.questions.size(), 2);
    EXPECT_FALSE(dialog_->isVisible());
    EXPECT_FALSE(controller().captureActive());
    EXPECT_EQ(inspectWav(take_).condition, WavCondition::kFinished);
}

// Without a take, Escape and closing close the window as they always did,
// the level monitor included.
TEST_F(KeysTest, WithoutATakeEscapeClosesWithoutAQuestion) {
    startActive();
    click(kMonitor);
    ASSERT_EQ(dialog_->monitorOn(), 1);
    press(Qt::Key_Escape);
    EXPECT_FALSE(dialog_->isVisible());
    EXPECT_TRUE(desktop_.questions.isEmpty());
}

}  // namespace
}  // namespace tunebox::test
