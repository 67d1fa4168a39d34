// The tune and info commands as a user runs them.

#include <gtest/gtest.h>

#include "support/command_runner.h"
#include "support/riff_bytes.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

class CommandInfoTest : public ::testing::Test {
  protected:
    test::RunResult tunebox(const std::string& arguments) {
        return test::runTunebox(dir_, arguments);
    }
    void expectRefusal(const std::string& path, const std::string& reason,
                       const std::string& out = "") {
        SCOPED_TRACE(path);
        const test::RunResult run = tunebox("info '" + path + "'");
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, out);
        EXPECT_EQ(run.err, "tunebox: " + path + ": " + reason + "\n");
    }

    test::TempDir dir_;
};

TEST_F(CommandInfoTest, TheDemoTuneIsEightSecondsOfDirectlyReadNativePcm) {
    const std::string path = (dir_ / "demo.wav").string();
    const test::RunResult made = tunebox("tune '" + path + "'");
    ASSERT_EQ(made.status, 0) << made.err;
    EXPECT_EQ(made.err, "");

    const test::RunResult info = tunebox("info '" + path + "'");
    ASSERT_EQ(info.status, 0) << info.err;
    EXPECT_NE(info.out.find("format: tag 1, 2 channels, 44100 samples/s, 176400 bytes/s, "
                            "block align 4, 16 bits"),
              std::string::npos)
        << info.out;
    EXPECT_NE(info.out.find("reading: direct\n"), std::string::npos);
    EXPECT_NE(info.out.find("length: 1411200 bytes, 00:08:00\n"), std::string::npos);
}

TEST_F(CommandInfoTest, RefusedFilesGiveOneLineAndStatusTwo) {
    expectRefusal((dir_ / "missing.wav").string(), "no such file");
    expectRefusal(dir_.path().string(), "is a directory");

    const std::string text = (dir_ / "notes.txt").string();
    test::writeFile(text, {'h', 'i', '\n'});
    expectRefusal(text, "neither a WAVE nor an MP3 file (no audio frame found)");

    const std::string cut = (dir_ / "cut.wav").string();
    const test::Bytes whole = test::nativeWave(test::Bytes(100));
    test::writeFile(cut, test::Bytes(whole.begin(), whole.end() - 1));
    expectRefusal(cut, "damaged WAVE file",
                  "unfinished: the header says 100 bytes of audio but 99 bytes follow; run "
                  "tunebox repair\n");

    const std::string wide = (dir_ / "wide.wav").string();
    ASSERT_EQ(test::run("sox -n -r 8000 -c 1 -b 24 '" + wide + "' synth 0.1 sine 440"), 0);
    // sox writes 24-bit samples in the extensible form, which is taken as PCM.
    expectRefusal(wide, "bits per sample 24 is not supported (PCM: 8 or 16)");
}

TEST_F(CommandInfoTest, TuneReportsAnOutputThatCannotBeCreated) {
    const std::string path = (dir_ / "no" / "such" / "dir.wav").string();
    const test::RunResult run = tunebox("tune '" + path + "'");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "tunebox: " + path + ": cannot be created (No such file or directory)\n");
}

}  // namespace
}  // namespace tunebox
