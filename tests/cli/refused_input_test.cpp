// Accompaniments with an absurd format or length, as info, decode and play
// meet them: one line naming what is wrong, status 2, and no waiting.

#include <gtest/gtest.h>

#include <filesystem>

#include "support/command_runner.h"
#include "support/sparse_wave.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

const std::string kCorpus = std::string(TUNEBOX_SOURCE_DIR) + "/fuzz/corpus/fuzz_wav_reader/";

class RefusedInputTest : public ::testing::Test {
  protected:
    // play must never reach a sound server.
    void SetUp() override { setenv("TUNEBOX_AUDIO", "virtual", 1); }
    void TearDown() override { unsetenv("TUNEBOX_AUDIO"); }

    // Runs each command on `path`, expecting the same one-line refusal and
    // nothing written.
    void expectRefusedEverywhere(const std::string& path, const std::string& reason) {
        const std::string quoted = "'" + path + "'";
        const std::string output = (dir_ / "out.wav").string();
        for (const std::string& command :
             {"info " + quoted, "decode " + quoted + " '" + output + "'", "play " + quoted}) {
            SCOPED_TRACE(command);
            const test::RunResult run = test::runTunebox(dir_, command);
            EXPECT_EQ(run.status, 2);
            EXPECT_EQ(run.out, "");
            EXPECT_EQ(run.err, "tunebox: " + path + ": " + reason + "\n");
            EXPECT_FALSE(std::filesystem::exists(output));
        }
    }

    test::TempDir dir_;
};

// Every reason's wording is the format check's own test; here one of each
// kind reaches the user from a file.
TEST_F(RefusedInputTest, ImplausibleFormatsInTheFuzzCorpus) {
    const std::pair<std::string, std::string> cases[] = {
        {"refused-rate-1mhz", "sample rate 1000000 Hz is outside 1000-768000 Hz"},
        {"refused-nine-channels", "channel count 9 is outside 1-8"},
        {"refused-block-align", "block alignment 3 does not match 2 channels of 16 bits (4)"},
        {"refused-growth",
         "average bytes per second 2000 is too few: native audio would be more than 64 times "
         "as large"},
    };
    for (const auto& [name, reason] : cases) {
        expectRefusedEverywhere(kCorpus + name, reason);
    }
}

TEST_F(RefusedInputTest, SevenHoursOfHalfRateStereoExceedTheLength) {
    const auto path = dir_ / "seven-hours.wav";
    test::writeSparseWave(path, test::kHalfRateStereo, 88200u * 7 * 3600);
    expectRefusedEverywhere(path.string(),
                            "lasts 7:00:00, longer than the 6:45:47 a source may last");
}

}  // namespace
}  // namespace tunebox
