// `tunebox play` run as a user runs it, on the virtual devices.
#include <gtest/gtest.h>

#include "support/command_runner.h"
#include "support/player_support.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

using test::RunResult;

class PlayCommand : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(
            test::writeWav(dir_ / "take.wav", test::patternBytes(3 * kNativeBytesPerSecond)));
    }

    // The command runs in the background as $player; `then` runs in the
    // shell meanwhile.
    RunResult play(const std::string& arguments, const std::string& backend = "virtual",
                   const std::string& speed = "20", const std::string& then = "") {
        const std::string command =
            "cd '" + dir_.path().string() + "' && TUNEBOX_AUDIO=" + backend +
            " TUNEBOX_VIRTUAL_SPEED=" + speed + " '" + TUNEBOX_EXE + "' play " + arguments +
            " </dev/null >out.txt 2>err.txt & player=$!; " + then + " wait $player";
        const int status = test::run(command);
        return {status, test::readText(dir_ / "out.txt"), test::readText(dir_ / "err.txt")};
    }

    test::TempDir dir_;
};

// Off a terminal it plays quietly to the end.
TEST_F(PlayCommand, PlaysAFileToItsEndWithAndWithoutEcho) {
    for (const std::string options : {"", " --echo", " --start 1.5"}) {
        const RunResult run = play("take.wav" + options);
        EXPECT_EQ(run.status, 0) << options << ": " << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, "");
    }
}

TEST_F(PlayCommand, BadInputGivesOneLineAndStatusTwo) {
    const struct {
        std::string arguments, backend, message;
    } cases[] = {
        {"missing.wav", "virtual", "tunebox: missing.wav: no such file\n"},
        {".", "virtual", "tunebox: .: is a directory\n"},
        {"take.wav --start 3", "virtual",
         "tunebox: --start 3 lies past the end of take.wav (00:03:00)\n"},
        {"take.wav", "none-such", "tunebox: no audio output device\n"},
    };
    for (const auto& [arguments, backend, message] : cases) {
        const RunResult run = play(arguments, backend);
        EXPECT_EQ(run.status, 2) << arguments;
        EXPECT_EQ(run.err, message);
    }
}

// At real speed the three seconds are far from over when Ctrl-C comes.
TEST_F(PlayCommand, CtrlCStopsPlaybackAtOnce) {
    const auto started = std::chrono::steady_clock::now();
    const RunResult run = play("take.wav", "virtual", "1", "sleep 1; kill -INT $player;");
    EXPECT_EQ(run.status, 130);
    EXPECT_EQ(run.err, "");
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(2500));
}

}  // namespace
}  // namespace tunebox
