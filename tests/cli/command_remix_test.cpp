// The voice file beside a recorded take and the remix command that moves the
// voice, as a user runs them through the virtual devices.
#include <gtest/gtest.h>

#include "support/take_runner.h"

namespace tunebox {
namespace {

constexpr const char* kTake = R"(export TUNEBOX_AUDIO=virtual TUNEBOX_VIRTUAL_SPEED=10
"$TUNEBOX" tune song.wav >/dev/null
"$TUNEBOX" record --accompaniment song.wav --output take.wav --start 3 --no-echo >/dev/null
)";

class CommandRemixTest : public ::testing::Test, protected test::TakeRunner {};

TEST_F(CommandRemixTest, ATakeKeepsItsVoiceAndARemixInPlaceWithoutNudgeChangesNothing) {
    const auto recorded = runScript(std::string(kTake) +
                                    "cp take.wav original.wav\n"
                                    "exec \"$TUNEBOX\" info take.voice.wav");
    ASSERT_EQ(recorded.status, 0) << recorded.err;
    expectFinishedTake("original.wav");
    const std::string noted =
        "voice of a take over: " + (dir() / "song.wav").string() + ", from byte 529200 of ";
    EXPECT_NE(recorded.out.find(noted), std::string::npos) << recorded.out;
    EXPECT_NE(recorded.out.find("reading: direct"), std::string::npos) << recorded.out;

    const auto refused = runScript("exec \"$TUNEBOX\" remix take.wav --nudge 0");
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.err, "tunebox: take.wav: already exists; pass --overwrite to replace it\n");

    const auto remixed = runScript(
        "\"$TUNEBOX\" remix take.wav --nudge 0 --overwrite >/dev/null || exit 9\n"
        "cmp -s take.wav original.wav || exit 8\n"
        "\"$TUNEBOX\" remix take.wav --nudge 10 -o later.wav || exit 7\n"
        "cmp -s later.wav original.wav && exit 6\n"
        "ls | grep -c remixing");
    EXPECT_EQ(remixed.status, 1) << remixed.err;  // grep found no leftover
    EXPECT_EQ(remixed.out, "later.wav: voice moved by 441 frames\n0\n");
}

TEST_F(CommandRemixTest, AnExistingVoiceFileIsReplacedOnlyWhenAsked) {
    const auto run = runScript(std::string(kTake) +
                               "\"$TUNEBOX\" record --accompaniment song.wav --output take.wav "
                               "--overwrite --no-voice-file >/dev/null || exit 9\n"
                               "rm take.wav\n"
                               "exec \"$TUNEBOX\" record --accompaniment song.wav "
                               "--output take.wav");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "tunebox: take.voice.wav: already exists; pass --overwrite to replace it\n");
    EXPECT_FALSE(std::filesystem::exists(dir() / "take.wav"));
}

TEST_F(CommandRemixTest, ARemixWithoutItsPartsIsRefusedInOneLine) {
    ASSERT_EQ(runScript(kTake).status, 0);
    for (const auto& [script, said] : {
             std::pair{"sox song.wav short.wav trim 0 1 && mv short.wav song.wav",
                       "the accompaniment has changed since the take"},
             std::pair{"mv song.wav gone.wav", "the take's accompaniment cannot be opened"},
             std::pair{"rm take.voice.wav", "no voice file beside the take"},
         }) {
        SCOPED_TRACE(script);
        const auto run = runScript(std::string(script) +
                                   "\nexec \"$TUNEBOX\" remix take.wav --nudge 5 -o out.wav");
        EXPECT_EQ(run.status, 2);
        EXPECT_NE(run.err.find(said), std::string::npos) << run.err;
        EXPECT_EQ(test::lineCount(run.err), 1u) << run.err;
        EXPECT_FALSE(std::filesystem::exists(dir() / "out.wav"));
    }
    const auto tooFar = runScript("exec \"$TUNEBOX\" remix take.wav --nudge 20000 -o out.wav");
    EXPECT_EQ(tooFar.status, 2);
}

}  // namespace
}  // namespace tunebox
