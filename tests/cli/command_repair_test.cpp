// The repair command, and what info says about a take cut off mid-recording.

#include <gtest/gtest.h>

#include <algorithm>

#include "support/command_runner.h"
#include "support/riff_bytes.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

// Zeroes both sizes the way a killed recorder leaves them.
test::Bytes withoutSizes(test::Bytes bytes) {
    const std::string data = "data";
    const auto found = std::search(bytes.begin(), bytes.end(), data.begin(), data.end());
    std::fill_n(bytes.begin() + 4, 4, 0);
    std::fill_n(found + 4, 4, 0);
    return bytes;
}

class CommandRepairTest : public ::testing::Test {
  protected:
    test::RunResult tunebox(const std::string& arguments) {
        return test::runTunebox(dir_, arguments);
    }

    test::TempDir dir_;
    std::string take_ = (dir_ / "take.wav").string();
};

TEST_F(CommandRepairTest, AKilledTakeAndItsVoiceFileAreToldOfAndRepairedToWhatSoxWrote) {
    const std::string original =
        test::synthesise(dir_ / "original.wav", 44100, 2, "synth 3 sine 440");
    const test::Bytes intact = test::readBytes(original);
    test::writeFile(take_, withoutSizes(intact));
    const std::string voice = (dir_ / "take.voice.wav").string();
    test::writeFile(voice, withoutSizes(intact));

    const test::RunResult info = tunebox("info '" + take_ + "'");
    EXPECT_NE(info.out.find("unfinished: the header says 0 bytes of audio but 3.0 s follow; "
                            "run tunebox repair\n"),
              std::string::npos)
        << info.out;

    const test::RunResult repaired = tunebox("repair '" + take_ + "'");
    EXPECT_EQ(repaired.status, 0) << repaired.err;
    EXPECT_EQ(repaired.out, take_ + ": repaired, 3.0 s of audio kept\n" + voice +
                                ": repaired, 3.0 s of audio kept\n");
    EXPECT_EQ(test::readBytes(take_), intact);
    EXPECT_EQ(test::readBytes(voice), intact);
    EXPECT_EQ(test::run("test \"$(sox --i -s '" + take_ + "')\" = 132300"), 0);

    const test::RunResult again = tunebox("repair '" + take_ + "'");
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(again.out, take_ + ": already finished, nothing changed\n");
    EXPECT_EQ(tunebox("info '" + take_ + "'").out.find("unfinished"), std::string::npos);
}

TEST_F(CommandRepairTest, WhatCannotBeRepairedIsRefusedOnOneLine) {
    test::writeFile(take_, {'n', 'o', 't', ' ', 'a', ' ', 'w', 'a', 'v'});
    const std::string missing = (dir_ / "missing.wav").string();
    for (const std::string& path : {take_, missing}) {
        SCOPED_TRACE(path);
        const test::RunResult run = tunebox("repair '" + path + "'");
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        EXPECT_EQ(run.err.rfind("tunebox: " + path + ": ", 0), 0u) << run.err;
    }
}

}  // namespace
}  // namespace tunebox
