// The command line itself: the version, a start without a display, one-line
// refusals of bad options, and the play command's clock and progress bar as
// a terminal shows them.

#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include "support/take_runner.h"

namespace tunebox {
namespace {

class CommandLineTest : public ::testing::Test, protected test::TakeRunner {};

std::vector<std::string> progressLines(const std::string& terminal) {
    static const std::regex progress(R"(\d\d:\d\d:\d\d \[[#-]+\] +\d+%.*)");
    std::vector<std::string> lines;
    std::string line;
    std::istringstream in(terminal);
    while (std::getline(in, line, '\r')) {
        for (std::istringstream parts(line); std::getline(parts, line, '\n');) {
            if (std::regex_match(line, progress)) {
                lines.push_back(line);
            }
        }
    }
    return lines;
}

TEST_F(CommandLineTest, VersionIsPrintedByTheFlagAndTheCommand) {
    const auto flag = runScript("exec \"$TUNEBOX\" --version");
    EXPECT_EQ(flag.status, 0);
    EXPECT_TRUE(std::regex_match(flag.out, std::regex("tunebox \\d+\\.\\d+\\.\\d+\n"))) << flag.out;
    EXPECT_EQ(runScript("exec \"$TUNEBOX\" version").out, flag.out);
}

TEST_F(CommandLineTest, WithoutADisplayTheWindowIsRefusedInOneLine) {
    const auto run =
        runScript("exec env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM \"$TUNEBOX\"");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              "tunebox: no display: the main window cannot open here; use a subcommand, see "
              "--help\n");
}

TEST_F(CommandLineTest, ANegativeStartIsRefusedInOneShortLine) {
    for (const std::string command :
         {"play song.wav --start -1", "record --accompaniment song.wav --output t.wav --start -1",
          "play song.wav --start nan"}) {
        SCOPED_TRACE(command);
        const auto run = runScript("exec \"$TUNEBOX\" " + command);
        EXPECT_NE(run.status, 0);
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        EXPECT_LT(run.err.size(), 120u) << run.err;
        EXPECT_NE(run.err.find("--start"), std::string::npos) << run.err;
    }
}

// On a terminal the clock only moves forward, and the bar is full at the end.
TEST_F(CommandLineTest, PlayClockRunsForwardAndTheBarFills) {
    const auto run = runScript(
        "export TUNEBOX_AUDIO=virtual TUNEBOX_VIRTUAL_SPEED=4\n"
        "sox -n -r 44100 -c 2 -b 16 song.wav synth 3 sine 440\n"
        "exec script -qec \"'$TUNEBOX' play song.wav\" /dev/null </dev/null");
    ASSERT_EQ(run.status, 0) << run.err;
    const auto lines = progressLines(run.out);
    ASSERT_GE(lines.size(), 3u) << run.out;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        EXPECT_LE(lines[i - 1].substr(0, 8), lines[i].substr(0, 8)) << run.out;
    }
    EXPECT_EQ(lines.back().substr(0, 46), "00:03:00 [##############################] 100%");
}

}  // namespace
}  // namespace tunebox
