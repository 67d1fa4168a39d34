// The record and demo commands as a user runs them, through the virtual
// devices: endings by Ctrl-C and by the accompaniment, refusals before any
// sound plays, and a disk that fills up mid-take.
#include <gtest/gtest.h>

#include "support/take_runner.h"

namespace tunebox {
namespace {

constexpr const char* kVirtual = "export TUNEBOX_AUDIO=virtual TUNEBOX_VIRTUAL_SPEED=10\n";

class CommandRecordTest : public ::testing::Test, protected test::TakeRunner {};

TEST_F(CommandRecordTest, AnOutputThatCannotBeCreatedIsRefusedBeforeAnySoundPlays) {
    const auto run = runScript(std::string(kVirtual) +
                               "\"$TUNEBOX\" tune song.wav >/dev/null\n"
                               "exec \"$TUNEBOX\" record --accompaniment song.wav "
                               "--output missing/take.wav");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "tunebox: missing/take.wav: the folder missing does not exist\n");
    EXPECT_FALSE(std::filesystem::exists(dir() / "missing"));
}

TEST_F(CommandRecordTest, AnUnreadableAccompanimentIsRefused) {
    const auto run = runScript(std::string(kVirtual) +
                               "echo not audio >song.wav\n"
                               "exec \"$TUNEBOX\" record --accompaniment song.wav --output t.wav");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err.rfind("tunebox: song.wav: ", 0), 0u) << run.err;
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    EXPECT_FALSE(std::filesystem::exists(dir() / "t.wav"));
}

TEST_F(CommandRecordTest, TheVoiceAloneRunsUntilCtrlCAndTheFileIsFinished) {
    const auto run = runScript(std::string(kVirtual) +
                               "\"$TUNEBOX\" record --output voice.wav & pid=$!\n"
                               "sleep 1; kill -INT $pid; wait $pid");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    expectFinishedTake("voice.wav");
}

TEST_F(CommandRecordTest, TheTakeEndsWithTheAccompaniment) {
    const auto run = runScript(std::string(kVirtual) +
                               "\"$TUNEBOX\" tune song.wav >/dev/null\n"
                               "exec timeout 60 \"$TUNEBOX\" record --accompaniment song.wav "
                               "--output take.wav --start 2 --no-echo");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("take.wav: 00:05:"), std::string::npos) << run.out;
}

// The file size limit stands in for a full disk: the take stops and says so
// in one line. The file it keeps is the controller's (FullDiskTest).
TEST_F(CommandRecordTest, AFullDiskStopsTheTakeWithOneMessage) {
    const auto run = runScript(std::string(kVirtual) +
                               "\"$TUNEBOX\" tune song.wav >/dev/null\n"
                               "trap '' XFSZ; ulimit -f 400\n"
                               "exec timeout 60 \"$TUNEBOX\" record --accompaniment song.wav "
                               "--output take.wav");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(test::lineCount(run.err), 1u) << run.err;
    EXPECT_NE(run.err.find("take.wav: could not be written"), std::string::npos) << run.err;
}

TEST_F(CommandRecordTest, TheLevelMonitorRunsUntilCtrlCAndWritesNothing) {
    const auto run = runScript(std::string(kVirtual) +
                               "\"$TUNEBOX\" monitor & pid=$!\n"
                               "sleep 1; kill -INT $pid; wait $pid");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    for (const auto& entry : std::filesystem::directory_iterator(dir())) {
        EXPECT_NE(entry.path().extension(), ".wav") << entry.path();
    }
}

TEST_F(CommandRecordTest, TheDemoSaysWhichDevicesItRecordedThrough) {
    const auto run = runScript(std::string(kVirtual) + "exec timeout 60 \"$TUNEBOX\" demo");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("devices: the virtual loopback"), std::string::npos) << run.out;
    expectFinishedTake("demo-tune.wav");
    expectFinishedTake("demo-take.wav");
}

}  // namespace
}  // namespace tunebox
