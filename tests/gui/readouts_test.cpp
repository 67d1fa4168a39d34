// What the singer reads while a session runs: the time box during an
// audition and a voice-only take, the delay in milliseconds and the
// calibration it came with, the clip light with its count, and a take that
// went out of sync.

#include <chrono>

#include "app/gui/clip_light.h"
#include "gui/session_fixture.h"
#include "platform/settings.h"

namespace tunebox::test {
namespace {

using namespace gui;
using namespace std::chrono_literals;

class ReadoutTest : public SessionTest {
  protected:
    QString timeText() const { return control<QLabel>(kTimeText)->text(); }
    bool timeMoves() {
        return waitFor([&] { return timeText() != QStringLiteral("00:00:00"); }, 5000);
    }
    void recordWholeSong() {
        click(kRecord);
        ASSERT_TRUE(controller().captureActive());
        ASSERT_TRUE(waitFor([&] { return !controller().captureActive(); }));
    }
};

TEST_F(ReadoutTest, TheTimeBoxCountsDuringTheAudition) {
    start(6, 4);
    recordWholeSong();
    EXPECT_EQ(timeText(), QStringLiteral("00:00:00"));
    click(kRecordedPlay);
    EXPECT_TRUE(timeMoves());
    click(kRecordedPause);
    EXPECT_EQ(face(kRecordedPlay), kFacePlaying) << "paused as the song's player shows it";
    EXPECT_EQ(face(kRecordedPause), kFacePaused);
}

TEST_F(ReadoutTest, TheTimeBoxCountsDuringAVoiceOnlyTake) {
    start(0, 4);
    click(kRecord);
    ASSERT_TRUE(controller().captureActive());
    EXPECT_TRUE(timeMoves());
    click(kRecorderStop);
    EXPECT_EQ(timeText(), QStringLiteral("00:00:00"));
}

TEST_F(ReadoutTest, TheDelayShowsBytesAndMillisecondsAndTheCalibrationItCameWith) {
    start(3, 8);
    writeCalibration(audio_->devicePair(), 1764);
    recordWholeSong();
    const QString delay = control<QLabel>(kDelayReadout)->text();
    const int bytes = delay.section(' ', 0, 0).toInt();
    EXPECT_EQ(delay, QStringLiteral("%1 B (%2 ms)").arg(bytes).arg(bytes / 176.4, 0, 'f', 1));
    const QString note = control<QLabel>(kCalibrationNote)->text();
    EXPECT_TRUE(note.contains(QString::fromStdString(audio_->devicePair()))) << note.toStdString();
    EXPECT_TRUE(note.contains(QStringLiteral("1764"))) << note.toStdString();
}

// The loud singer over the tone clips the mix: the light comes on, holds
// for two seconds of the clock it reads, and the take's end says how many
// blocks clipped.
TEST_F(ReadoutTest, TheClipLightHoldsTwoSecondsAndTheTakeTellsItsCount) {
    start(3, 8);
    auto now = std::chrono::steady_clock::time_point{};
    ClipLight& light = dialog_->clipLight();
    light.setClock([&] { return now; });
    EXPECT_FALSE(light.lit());
    const QColor unlit = light.grab().toImage().pixelColor(1, 1);

    recordWholeSong();
    ASSERT_TRUE(light.lit());
    EXPECT_EQ(light.grab().toImage().pixelColor(1, 1), QColor(255, 0, 0));
    now += 1999ms;
    light.refresh();
    EXPECT_TRUE(light.lit());
    now += 1ms;
    light.refresh();
    EXPECT_FALSE(light.lit());
    EXPECT_EQ(light.grab().toImage().pixelColor(1, 1), unlit);

    ASSERT_TRUE(waitFor([&] { return !desktop_.messages.isEmpty(); }, 2000));
    const uint32_t clipped = controller().capture().clippedBlocks();
    ASSERT_GT(clipped, 0u);
    ASSERT_EQ(desktop_.messages.size(), 1);
    EXPECT_TRUE(desktop_.messages[0].contains(QStringLiteral(": %1.").arg(clipped)))
        << desktop_.messages[0].toStdString();
}

// A stall of the playback that nobody reported cannot be placed: the take
// ends with a box naming the moment from which it is out of sync.
TEST_F(ReadoutTest, ATakeThatWentOutOfSyncSaysFromWhen) {
    startWith(4, 5,
              {.outputStalls = {{.atBytes = 2 * kNativeBytesPerSecond,
                                 .frames = kNativeSampleRate / 3,
                                 .reported = false}}});
    recordWholeSong();
    ASSERT_TRUE(waitFor([&] { return desktop_.messages.size() >= 2; }, 2000));
    EXPECT_EQ(desktop_.messages.filter(QStringLiteral("out of sync from 00:0")).size(), 1)
        << desktop_.messages.join('|').toStdString();
}

}  // namespace
}  // namespace tunebox::test
