#pragma once
// Test material made at test time by the command-line tools sox and lame.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/test_files.h"

namespace tunebox::test {

// Runs a shell command; the test fails when it does.
inline void runTool(const std::string& command) {
    ASSERT_EQ(std::system((command + " >/dev/null 2>&1").c_str()), 0) << command;
}

// Sound that sox synthesises, the same at every run: `effects` as sox spells
// them ("synth 1 sine 440"), `encoding` as its output options.
inline std::string synthesise(const std::filesystem::path& path, int rate, int channels,
                              const std::string& effects, const std::string& encoding = "-b 16") {
    runTool("sox -R -n -r " + std::to_string(rate) + " -c " + std::to_string(channels) + " " +
            encoding + " '" + path.string() + "' " + effects);
    return path.string();
}

// That sound encoded by lame with `lameOptions`; the WAV file stays beside it.
inline std::string synthesiseMp3(const std::filesystem::path& path, int rate, int channels,
                                 const std::string& effects, const std::string& lameOptions) {
    const std::string wav = synthesise(path.string() + ".wav", rate, channels, effects);
    runTool("lame --quiet " + lameOptions + " '" + wav + "' '" + path.string() + "'");
    return path.string();
}

}  // namespace tunebox::test
