#pragma once
// Runs the tunebox executable from a shell script (for signals, limits and
// environments) and checks the take it leaves behind.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/command_runner.h"
#include "support/riff_bytes.h"
#include "support/temp_dir.h"

namespace tunebox::test {

class TakeRunner {
  public:
    // `script` runs under bash with $TUNEBOX naming the executable and the
    // working directory set to dir().
    RunResult runScript(const std::string& script) {
        const auto out = dir_.path() / "stdout.txt";
        const auto err = dir_.path() / "stderr.txt";
        std::ofstream(dir_.path() / "script.sh") << "cd '" << dir_.path().string() << "'\n"
                                                 << "TUNEBOX='" << TUNEBOX_EXE << "'\n"
                                                 << script << '\n';
        const int status = run("bash '" + (dir_.path() / "script.sh").string() + "' >'" +
                               out.string() + "' 2>'" + err.string() + "'");
        return {status, readText(out), readText(err)};
    }
    const std::filesystem::path& dir() const { return dir_.path(); }

    // A finished take: both RIFF sizes agree with the file, the data is whole
    // frames, and there is some of it.
    void expectFinishedTake(const std::string& name) {
        const Bytes bytes = readBytes(dir_.path() / name);
        ASSERT_GE(bytes.size(), 44u) << name;
        const uint32_t dataSize = loadLe32At(bytes, 40);
        EXPECT_EQ(loadLe32At(bytes, 4), bytes.size() - 8) << name;
        EXPECT_EQ(dataSize, bytes.size() - 44) << name;
        EXPECT_EQ(dataSize % 4, 0u) << name;
        EXPECT_GT(dataSize, 0u) << name;
    }

  private:
    TempDir dir_;
};

// Lines in a text, for "exactly one line" checks.
inline std::size_t lineCount(const std::string& text) {
    std::size_t lines = 0;
    for (char c : text) {
        lines += c == '\n' ? 1 : 0;
    }
    return lines;
}

}  // namespace tunebox::test
