#pragma once
// Runs the tunebox executable as a user would, capturing what it prints.

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "support/temp_dir.h"

namespace tunebox::test {

struct RunResult {
    int status;
    std::string out;
    std::string err;
};

inline std::string slurp(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// `arguments` are passed through the shell as written; output goes to files
// in `dir`.
inline RunResult runTunebox(const TempDir& dir, const std::string& arguments) {
    const auto out = dir / "stdout.txt";
    const auto err = dir / "stderr.txt";
    const std::string command = std::string("'") + TUNEBOX_EXE + "' " + arguments + " >'" +
                                out.string() + "' 2>'" + err.string() + "'";
    const int raw = std::system(command.c_str());
    const int status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    return {status, slurp(out), slurp(err)};
}

}  // namespace tunebox::test
