// One whole session on the real window, as a singer goes through it, in
// each language: pick, monitor over PLAY, PAUSE, REC to the song's end, then
// audition the take. Input is synthetic mouse and key events through the X
// server; screenshots of each step land in build/screenshots as
// xcb-<language>-<scale>x-<step>.png (the scale is QT_SCALE_FACTOR's).

#include <QGuiApplication>
#include <fstream>

#include "app/gui/language.h"
#include "app/gui/level_meter.h"
#include "gui/session_fixture.h"
#include "gui/xvfb/xvfb_state.h"
#include "playback/wav_repair.h"

namespace tunebox::test {
namespace {

using namespace gui;

class WindowSessionTest : public SessionTest {
  protected:
    void SetUp() override {
        if (xvfbState == XvfbState::kMissing) {
            GTEST_SKIP() << "Xvfb is not installed: no X server to open the window on";
        }
        ASSERT_EQ(xvfbState, XvfbState::kRunning) << "Xvfb was found but did not start";
        SessionTest::SetUp();
    }

    void snap(const QString& step) {
        QTest::qWait(100);  // for the last repaint to reach the server
        QDir().mkpath(TUNEBOX_SCREENSHOT_DIR);
        const QString name = QStringLiteral("xcb-%1-%2x-%3.png")
                                 .arg(language_)
                                 .arg(qRound(dialog_->devicePixelRatioF()))
                                 .arg(step);
        EXPECT_TRUE(dialog_->grab().save(QStringLiteral(TUNEBOX_SCREENSHOT_DIR "/") + name))
            << name.toStdString();
    }

    // The first segment of the upper bar shows its lit green.
    bool meterLit() const {
        const QImage& frame = dialog_->meter().frame();
        return frame.pixelColor(frame.width() / (2 * kMeterSegments), frame.height() / 4) ==
               QColor(0, 255, 0);
    }

    void runSession(Language language) {
        language_ = language == Language::kJapanese ? "ja" : "en";
        const Translations translations(language);
        // Words timed one by one beside the song: the lyrics pane wipes them.
        std::ofstream(configDir() / "song.lrc")
            << "[00:00.50]<00:00.50>Sing <00:01.50>along <00:02.50>now\n"
               "[00:03.50]<00:03.50>and <00:04.50>once <00:05.50>more\n";
        // A singer who stays below full scale: the session ends with no note.
        startWith(8, 4, {.voice = tone(60, 220, 16000, 12000)});
        ASSERT_EQ(QGuiApplication::platformName(), "xcb");
        activate();
        snap("1-picked");

        // The level monitor listens while the accompaniment plays, as a
        // singer checks the microphone against the song.
        click(kMonitor);
        ASSERT_EQ(dialog_->monitorOn(), 1);
        press(Qt::Key_Space);
        ASSERT_EQ(karaoke().state, kPlaying);
        ASSERT_TRUE(waitFor([&] { return meterLit(); }, 5000));
        QTest::qWait(600);  // a tick of the time box
        snap("2-monitor");
        press(Qt::Key_Space);
        ASSERT_NE(karaoke().state, kPlaying);
        snap("3-paused");
        click(kMonitor);
        press(Qt::Key_S);

        press(Qt::Key_R);
        ASSERT_TRUE(controller().captureActive());
        QTest::qWait(800);
        snap("4-recording");
        press(Qt::Key_Escape);
        EXPECT_TRUE(controller().captureActive()) << "Escape does not end a take";
        ASSERT_TRUE(waitFor([&] { return !controller().captureActive(); }));
        EXPECT_EQ(inspectWav(take_).condition, WavCondition::kFinished);

        click(kRecordedPlay);
        ASSERT_EQ(dialog_->recordedStatus().state, kPlaying);
        QTest::qWait(500);
        snap("5-audition");
        press(Qt::Key_S);
        EXPECT_EQ(dialog_->recordedStatus().state, kIdle);
        EXPECT_TRUE(desktop_.messages.isEmpty()) << desktop_.messages.join('\n').toStdString();

        dialog_->resize(dialog_->width() * 3 / 2, dialog_->height() * 3 / 2);
        snap("6-stretched");
    }

    QString language_;
};

TEST_F(WindowSessionTest, WholeSessionInJapanese) {
    runSession(Language::kJapanese);
}

TEST_F(WindowSessionTest, WholeSessionInEnglish) {
    runSession(Language::kEnglish);
}

}  // namespace
}  // namespace tunebox::test
