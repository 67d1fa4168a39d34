// No command replaces an existing file unless told to: each writer refuses
// in one line before it opens anything, and --overwrite lets it through.
// Standard output and devices are written, not replaced: CommandFilesTest.

#include <gtest/gtest.h>

#include <fstream>

#include "support/take_runner.h"

namespace tunebox {
namespace {

constexpr const char* kVirtual = "export TUNEBOX_AUDIO=virtual TUNEBOX_VIRTUAL_SPEED=10\n";

class OverwriteTest : public ::testing::Test, protected test::TakeRunner {};

TEST_F(OverwriteTest, EveryWriterKeepsAnExistingFileUnlessToldToReplaceIt) {
    ASSERT_EQ(runScript("\"$TUNEBOX\" tune song.wav >/dev/null").status, 0);
    for (const std::string command :
         {"record --accompaniment song.wav --output precious.wav", "record --output precious.wav",
          "decode song.wav precious.wav", "fx song.wav precious.wav --echo", "tune precious.wav",
          "demo --output precious.wav"}) {
        SCOPED_TRACE(command);
        const std::string keep = "precious, not audio\n";
        std::ofstream(dir() / "precious.wav") << keep;
        const auto refused =
            runScript(std::string(kVirtual) + "timeout 20 \"$TUNEBOX\" " + command);
        EXPECT_EQ(refused.status, 2);
        EXPECT_EQ(refused.err,
                  "tunebox: precious.wav: already exists; pass --overwrite to replace it\n");
        EXPECT_EQ(test::readText(dir() / "precious.wav"), keep);

        // The voice alone only ends on a signal.
        const auto replaced =
            runScript(std::string(kVirtual) + "timeout --preserve-status -s INT 2 \"$TUNEBOX\" " +
                      command + " --overwrite");
        EXPECT_EQ(replaced.status, 0) << replaced.err;
        expectFinishedTake("precious.wav");
    }
}

}  // namespace
}  // namespace tunebox
