// REC, the level monitor and the audition of the take, through the
// simulated sound card.

#include <sys/resource.h>

#include <QElapsedTimer>
#include <algorithm>
#include <csignal>
#include <iostream>

#include "app/gui/level_meter.h"
#include "gui/session_fixture.h"
#include "playback/wav_length.h"
#include "support/tool_fixture.h"

namespace tunebox::test {
namespace {

using namespace gui;

constexpr uint32_t kWavHeaderBytes = 44;

// A file size limit stands in for a full disk: writes past it fail, and the
// signal that would end the process meanwhile is ignored.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) : previous_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &saved_);
        rlimit limit = saved_;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &saved_);
        std::signal(SIGXFSZ, previous_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  private:
    rlimit saved_{};
    void (*previous_)(int);
};

class RecordingSessionTest : public SessionTest {
  protected:
    bool meterLit() const {
        const QImage& frame = dialog_->meter().frame();
        return frame.pixelColor(5, frame.height() / 4) == QColor(0, 255, 0);
    }

    // Nobody presses STOP: the take must end by itself, say why once, and
    // leave a finished file.
    void expectFullDiskEndsTheTake(bool withSong) {
        constexpr rlim_t kDiskBytes = 300 * 1024;
        start(20, 4, withSong);
        {
            const FileSizeLimit disk(kDiskBytes);
            click(kRecord);
            ASSERT_TRUE(dialog_->capture().isActive());
            ASSERT_TRUE(waitFor([&] { return !desktop_.messages.isEmpty(); }, 10000));
        }
        EXPECT_FALSE(dialog_->capture().isActive());
        EXPECT_EQ(karaoke().state, kIdle);
        EXPECT_EQ(face(kRecord), kFaceRecord);
        QTest::qWait(100);
        ASSERT_EQ(desktop_.messages.size(), 1) << desktop_.messages.join('\n').toStdString();
        const QString& message = desktop_.messages.first();
        EXPECT_TRUE(message.startsWith(QStringLiteral("録音の中断|録音ﾌｧｲﾙに書き込めません")))
            << message.toStdString();
        EXPECT_TRUE(message.endsWith(QString::fromStdString(take_))) << message.toStdString();

        uint32_t length = 0;
        ASSERT_EQ(wavGetLength(take_, length), 1);
        EXPECT_EQ(readBytes(take_).size(), kWavHeaderBytes + length);
        EXPECT_GT(length, 0u);
        EXPECT_LE(kWavHeaderBytes + length, kDiskBytes);
    }
};

TEST_F(RecordingSessionTest, AFullDiskEndsAVoiceOnlyTakeAtOnce) {
    expectFullDiskEndsTheTake(false);
}

TEST_F(RecordingSessionTest, AFullDiskEndsATakeOverTheSongAtOnce) {
    expectFullDiskEndsTheTake(true);
}

TEST_F(RecordingSessionTest, RecWithTheMonitorOnSwitchesToRecordingInOnePress) {
    start(20, 1);
    click(kMonitor);
    ASSERT_EQ(dialog_->monitorOn(), 1);
    EXPECT_EQ(face(kMonitor), kFaceMonitoring);
    EXPECT_EQ(dialog_->capture().state(), kRecCapturing);
    QTest::qWait(100);

    click(kRecord);
    EXPECT_EQ(dialog_->monitorOn(), 0);
    EXPECT_EQ(face(kMonitor), kFaceMonitor);
    EXPECT_EQ(dialog_->capture().state(), kRecCapturing);
    EXPECT_EQ(face(kRecord), kFaceRecording);
    EXPECT_EQ(karaoke().state, kPlaying);
    ASSERT_TRUE(waitFor([&] { return meterLit(); }, 5000));
    QTest::qWait(600);  // one tick of the time display
    saveScreenshot(*dialog_, "recording");

    click(kRecorderStop);
    EXPECT_FALSE(dialog_->capture().isActive());
    EXPECT_EQ(karaoke().state, kIdle);
    EXPECT_EQ(face(kRecord), kFaceRecord);
    EXPECT_FALSE(meterLit()) << "the meter is cleared when capture stops";
}

TEST_F(RecordingSessionTest, RecIsRefusedWhileTheTakeIsPlaying) {
    start(2, 1);
    writeTone(take_, 20);
    click(kRecordedPlay);
    ASSERT_EQ(recorded().state, kPlaying);
    click(kRecord);
    EXPECT_FALSE(dialog_->capture().isActive());
    EXPECT_EQ(face(kRecord), kFaceRecord);
    click(kRecorderStop);
    EXPECT_EQ(recorded().state, kIdle);
}

TEST_F(RecordingSessionTest, AccompanimentEndFinishesTheTakeWhichThenPlaysBack) {
    start(3, 4);
    saveScreenshot(*dialog_, "idle");
    click(kRecord);
    ASSERT_TRUE(dialog_->capture().isActive());
    EXPECT_FALSE(control<QLabel>(kCaptureStartReadout)->text().isEmpty());
    EXPECT_FALSE(control<QLabel>(kPlaybackStartReadout)->text().isEmpty());
    ASSERT_TRUE(waitFor([&] { return !dialog_->capture().isActive(); }));
    EXPECT_EQ(karaoke().state, kIdle);
    EXPECT_EQ(face(kRecord), kFaceRecord);
    EXPECT_EQ(face(kKaraokePlay), kFacePlay);

    uint32_t length = 0;
    ASSERT_EQ(wavGetLength(take_, length), 1);
    EXPECT_EQ(readBytes(take_).size(), kWavHeaderBytes + length) << "sizes written at close";
    EXPECT_GT(length, 2u * 176400);
    EXPECT_LE(length, 4u * 176400);
    EXPECT_EQ(control<QLabel>(kDelayReadout)->text().toStdString(),
              std::to_string(dialog_->capture().syncMx().alignedDelay()))
        << "the delay the take was lined up with, not one measured after the song's end";

    click(kRecordedPlay);
    EXPECT_EQ(recorded().state, kPlaying);
    EXPECT_EQ(face(kRecordedPlay), kFacePlaying);
    EXPECT_EQ(recorded().length, length);
    ASSERT_TRUE(waitFor([&] { return recorded().state == kIdle; }));
    EXPECT_EQ(face(kRecordedPlay), kFacePlay);
}

// The mixer keeps whole frames of a delay; 4,400 bytes is 1,100 of them.
TEST_F(RecordingSessionTest, ManualDelayTypedInIsWhatTheMixerUses) {
    start(20, 1);
    auto* edit = control<QLineEdit>(kManualDelayEdit);
    edit->setFocus();
    QTest::keyClicks(edit, "4400");
    click(kManualDelayCheck);
    click(kRecord);
    ASSERT_TRUE(dialog_->capture().isActive());
    ASSERT_TRUE(waitFor([&] { return control<QLabel>(kDelayReadout)->text() == "4400"; }, 3000))
        << control<QLabel>(kDelayReadout)->text().toStdString();
    click(kRecorderStop);
}

// Measured, not asserted tightly: how long events wait while a take runs.
TEST_F(RecordingSessionTest, DialogStaysResponsiveWhileRecording) {
    start(6, 1);
    click(kRecord);
    ASSERT_TRUE(dialog_->capture().isActive());
    std::vector<qint64> latencies;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 4000) {
        const qint64 posted = clock.nsecsElapsed();
        QTimer::singleShot(0, dialog_.get(),
                           [&] { latencies.push_back(clock.nsecsElapsed() - posted); });
        QTest::qWait(20);
    }
    click(kRecorderStop);
    ASSERT_FALSE(latencies.empty());
    std::sort(latencies.begin(), latencies.end());
    const double median = latencies[latencies.size() / 2] / 1e6;
    const double worst = latencies.back() / 1e6;
    const auto within50 = std::count_if(latencies.begin(), latencies.end(),
                                        [](qint64 ns) { return ns <= 50'000'000; });
    std::cout << "event latency while recording: " << latencies.size() << " events, median "
              << median << " ms, worst " << worst << " ms, " << within50 << " within 50 ms\n";
    RecordProperty("median_ms", std::to_string(median));
    RecordProperty("worst_ms", std::to_string(worst));
    EXPECT_LT(worst, 1000.0);
}

}  // namespace
}  // namespace tunebox::test
