// REC never records over a file by surprise and says why it does not start;
// a take still running when the dialog closes or the session ends is
// finished with what was sung so far.

#include <csignal>

#include "app/gui/run_dialog.h"
#include "app/gui/termination_signals.h"
#include "gui/session_fixture.h"
#include "platform/settings.h"
#include "playback/wav_repair.h"
#include "support/riff_bytes.h"

namespace tunebox::test {
namespace {

using namespace gui;

bool finishedTake(const std::string& path) {
    return inspectWav(path).condition == WavCondition::kFinished;
}

// A take whose two sizes were never written, as a killed recorder leaves it.
Bytes cutShortTake() {
    Bytes bytes = nativeWave(counting(8000));
    std::fill_n(bytes.begin() + 4, 4, 0);
    std::fill_n(bytes.begin() + 40, 4, 0);
    return bytes;
}

class TakeSafetyTest : public SessionTest {
  protected:
    void recordBriefly() {
        click(kRecord);
        ASSERT_TRUE(controller().captureActive());
        QTest::qWait(300);
        click(kRecorderStop);
        ASSERT_FALSE(controller().captureActive());
    }
};

TEST_F(TakeSafetyTest, RecAsksBeforeRecordingOverAnExistingFile) {
    start(20, 4);
    const Bytes precious = nativeWave(counting(4000));
    writeFile(take_, precious);

    click(kRecord);
    ASSERT_EQ(desktop_.questions.size(), 1);
    EXPECT_TRUE(desktop_.questions.first().contains(QString::fromStdString(take_)));
    EXPECT_FALSE(controller().captureActive());
    EXPECT_EQ(karaoke().state, kIdle);
    EXPECT_EQ(face(kRecord), kFaceRecord);
    EXPECT_EQ(readBytes(take_), precious);

    desktop_.yesAnswer = true;
    recordBriefly();
    EXPECT_EQ(desktop_.questions.size(), 2);
    EXPECT_NE(readBytes(take_), precious);
    EXPECT_TRUE(finishedTake(take_));
}

// The save picker asks itself before it hands over an existing name; that
// answer holds for one take, and the take it made is asked about again.
TEST_F(TakeSafetyTest, ThePickersQuestionCountsOnceForItsName) {
    start(20, 4);
    writeFile(take_, nativeWave(counting(4000)));
    desktop_.saveAnswer = QString::fromStdString(take_);
    click(kRecordedPick);
    recordBriefly();
    EXPECT_TRUE(desktop_.questions.isEmpty());

    click(kRecord);
    EXPECT_EQ(desktop_.questions.size(), 1);
    EXPECT_FALSE(controller().captureActive());
}

// The take and its voice file go together: one question names both, and with
// the voice file switched off it is neither asked about nor touched.
TEST_F(TakeSafetyTest, OneQuestionCoversTheTakeAndItsVoiceFile) {
    start(20, 4);
    const std::string voice = (configDir() / "take.voice.wav").string();
    const Bytes precious = nativeWave(counting(4000));
    writeFile(take_, precious);
    writeFile(voice, precious);
    desktop_.yesAnswer = true;
    recordBriefly();
    ASSERT_EQ(desktop_.questions.size(), 1);
    EXPECT_TRUE(desktop_.questions.first().contains(QString::fromStdString(take_)));
    EXPECT_TRUE(desktop_.questions.first().contains(QString::fromStdString(voice)));
    EXPECT_TRUE(finishedTake(voice));
    EXPECT_NE(readBytes(voice), precious);

    std::filesystem::remove(take_);
    writeFile(voice, precious);
    click(kVoiceFileCheck);
    recordBriefly();
    EXPECT_EQ(desktop_.questions.size(), 1);
    EXPECT_EQ(readBytes(voice), precious);
    dialog_.reset();
    EXPECT_EQ(readVoiceFileChoice(), 0) << "the switch is kept for the next start";
}

// Each refusal is one message box, and nothing starts.
TEST_F(TakeSafetyTest, ARefusedRecSaysWhyAndStartsNothing) {
    const std::pair<std::string, QString> cases[] = {
        {"", QStringLiteral("Name the recording file")},
        {"/nonexistent-folder/take.wav", QStringLiteral("folder does not exist")},
    };
    start(20, 4);
    for (const auto& [name, expected] : cases) {
        desktop_.messages.clear();
        control<QLineEdit>(kRecordedName)->setText(QString::fromStdString(name));
        click(kRecord);
        ASSERT_EQ(desktop_.messages.size(), 1) << name;
        EXPECT_TRUE(desktop_.messages.first().contains(expected))
            << desktop_.messages.first().toStdString();
        EXPECT_FALSE(controller().captureActive());
        EXPECT_EQ(karaoke().state, kIdle);
        EXPECT_EQ(face(kRecord), kFaceRecord);
    }
}

TEST_F(TakeSafetyTest, AMicrophoneThatWillNotOpenIsTold) {
    start(20, 4, true);
    click(kRecord);
    ASSERT_EQ(desktop_.messages.size(), 1);
    EXPECT_TRUE(desktop_.messages.first().contains(QStringLiteral("The recording cannot start")))
        << desktop_.messages.first().toStdString();
    EXPECT_EQ(karaoke().state, kIdle);
}

TEST_F(TakeSafetyTest, TheNextStartNamesTheLastTakesFile) {
    start(20, 4);
    recordBriefly();
    dialog_ = std::make_unique<MainDialog>(desktop_.services());
    EXPECT_EQ(control<QLineEdit>(kRecordedName)->text().toStdString(), take_);
    click(kRecord);
    EXPECT_EQ(desktop_.questions.size(), 1) << "the restored name is asked about like any";
}

TEST_F(TakeSafetyTest, TheLastTakeCutShortIsOfferedForRepairAtStart) {
    const auto cut = (configDir() / "cut.wav").string();
    writeFile(cut, cutShortTake());
    writeLastTake(cut);
    desktop_.yesAnswer = true;
    dialog_ = std::make_unique<MainDialog>(desktop_.services());
    ASSERT_TRUE(waitFor([&] { return !desktop_.questions.isEmpty(); }, 5000));
    EXPECT_TRUE(desktop_.questions.first().startsWith(QStringLiteral("Repair recording file|")));
    EXPECT_TRUE(finishedTake(cut));
    ASSERT_EQ(desktop_.messages.size(), 1);
    EXPECT_TRUE(desktop_.messages.first().contains(QStringLiteral("Repaired")))
        << desktop_.messages.first().toStdString();
    EXPECT_EQ(readBytes(cut).size(), nativeWave(counting(8000)).size());
}

TEST_F(TakeSafetyTest, APickedTakeCutShortIsLeftAloneWhenTheRepairIsDeclined) {
    start(20, 4);
    const Bytes cut = cutShortTake();
    writeFile(take_, cut);
    desktop_.saveAnswer = QString::fromStdString(take_);
    click(kRecordedPick);
    EXPECT_EQ(desktop_.questions.size(), 1);
    EXPECT_EQ(readBytes(take_), cut);
    EXPECT_TRUE(desktop_.messages.isEmpty());
}

// The session manager's request to save and a SIGTERM each end the take
// with a file whose header covers all that was written.
TEST_F(TakeSafetyTest, TheSessionsEndFinishesTheTake) {
    start(20, 4);
    const TerminationSignals terminations;
    endTakeWithTheSession(*dialog_, terminations);

    click(kRecord);
    QTest::qWait(300);
    dialog_->finishTake();  // what the request to save runs
    EXPECT_FALSE(controller().captureActive());
    EXPECT_TRUE(dialog_->isVisible()) << "the session may yet go on";
    EXPECT_TRUE(finishedTake(take_));

    desktop_.yesAnswer = true;
    click(kRecord);
    ASSERT_TRUE(controller().captureActive());
    QTest::qWait(300);
    std::raise(SIGTERM);
    ASSERT_TRUE(waitFor([&] { return !dialog_->isVisible(); }, 5000));
    EXPECT_EQ(terminations.received(), SIGTERM);
    EXPECT_FALSE(controller().captureActive());
    EXPECT_TRUE(finishedTake(take_));
    EXPECT_GT(readBytes(take_).size(), 44u + 176400 / 2) << "the second take's sound is kept";
}

}  // namespace
}  // namespace tunebox::test
