// Every failure the singer has to act on is said once, in one message box
// that names the file or the device; nothing else starts.

#include <QTextBrowser>
#include <filesystem>

#include "gui/session_fixture.h"
#include "support/small_mount.h"

namespace tunebox::test {
namespace {

using namespace gui;

class FailureMessageTest : public SessionTest {
  protected:
    // The one message there is, "caption|text"; fails the test otherwise.
    QString onlyMessage() const {
        EXPECT_EQ(desktop_.messages.size(), 1) << desktop_.messages.join('\n').toStdString();
        return desktop_.messages.value(0);
    }
};

TEST_F(FailureMessageTest, RecIntoAReadOnlyFolderIsRefused) {
    start(20, 4);
    const auto folder = configDir() / "read-only";
    const SmallMount readOnly(folder, "ro,size=1m");
    if (!readOnly.mounted()) {
        GTEST_SKIP() << "mounting a read-only folder needs privileges";
    }
    control<QLineEdit>(kRecordedName)
        ->setText(QString::fromStdString((folder / "take.wav").string()));
    click(kRecord);
    EXPECT_TRUE(onlyMessage().contains(QString::fromStdString(folder.string())));
    EXPECT_FALSE(controller().captureActive());
    EXPECT_EQ(face(kRecord), kFaceRecord);
}

TEST_F(FailureMessageTest, AuditionOfAMissingTakeNamesIt) {
    start(2, 4);
    click(kRecordedPlay);
    const QString message = onlyMessage();
    EXPECT_TRUE(message.contains(QString::fromStdString(take_))) << message.toStdString();
    EXPECT_TRUE(message.contains(QStringLiteral("does not exist"))) << message.toStdString();
    EXPECT_EQ(dialog_->recordedStatus().state, kIdle);
    EXPECT_EQ(face(kRecordedPlay), kFacePlay);
}

TEST_F(FailureMessageTest, AMonitorWithoutAMicrophoneIsTold) {
    start(2, 4, true);
    click(kMonitor);
    EXPECT_TRUE(onlyMessage().startsWith(QStringLiteral("No microphone|")));
    EXPECT_EQ(face(kMonitor), kFaceMonitor);
    click(kMonitor);
    EXPECT_EQ(desktop_.messages.size(), 2) << "each press that fails says so";
}

// PLAY alone, and REC whose take then runs without the song until the
// tick finds the player stopped: one message each.
TEST_F(FailureMessageTest, SpeakersThatWillNotOpenAreToldOncePerPress) {
    startWith(20, 4, {.failOutputOpen = true});
    click(kKaraokePlay);
    EXPECT_TRUE(onlyMessage().startsWith(QStringLiteral("No sound output|")));

    // A failed PLAY counts as playing until the next tick finds it stopped.
    ASSERT_TRUE(waitFor([&] { return karaoke().state == kIdle; }, 2000));
    desktop_.messages.clear();
    click(kRecord);
    ASSERT_TRUE(controller().captureActive());
    ASSERT_TRUE(waitFor([&] { return !controller().captureActive(); }, 5000));
    QTest::qWait(50);
    EXPECT_TRUE(onlyMessage().startsWith(QStringLiteral("No sound output|")));
}

TEST_F(FailureMessageTest, HelpOpensInTheBrowserOrElseInTheProgram) {
    start(2, 4);
    click(kHelpButton);
    ASSERT_EQ(desktop_.opened.size(), 1u);
    EXPECT_TRUE(QFileInfo(desktop_.opened[0].toLocalFile()).isFile());
    EXPECT_EQ(dialog_->findChild<QTextBrowser*>(), nullptr);

    desktop_.browserOpens = false;
    click(kHelpButton);
    auto* viewer = dialog_->findChild<QTextBrowser*>();
    ASSERT_NE(viewer, nullptr);
    EXPECT_FALSE(viewer->toPlainText().isEmpty());
    EXPECT_TRUE(desktop_.messages.isEmpty());
}

TEST_F(FailureMessageTest, AHelpPageThatIsNotInstalledIsTold) {
    desktop_.pageFolders = {QString::fromStdString((configDir() / "nowhere").string())};
    start(2, 4);
    click(kHelpButton);
    EXPECT_TRUE(onlyMessage().contains(QStringLiteral("nowhere")));
    EXPECT_TRUE(desktop_.opened.empty());
}

}  // namespace
}  // namespace tunebox::test
