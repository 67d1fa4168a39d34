#pragma once
// Runs the tunebox executable as a user would, capturing what it prints.

#include <sys/wait.h>

#include <cstdlib>
#include <string>

#include "support/temp_dir.h"
#include "support/test_files.h"

namespace tunebox::test {

struct RunResult {
    int status;
    std::string out;
    std::string err;
};

// Runs a shell command; its exit status, or -1 when it did not exit.
inline int run(const std::string& command) {
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// `arguments` are passed through the shell as written; output goes to files
// in `dir`.
inline RunResult runTunebox(const TempDir& dir, const std::string& arguments) {
    const auto out = dir / "stdout.txt";
    const auto err = dir / "stderr.txt";
    const std::string command = std::string("'") + TUNEBOX_EXE + "' " + arguments + " >'" +
                                out.string() + "' 2>'" + err.string() + "'";
    const int status = run(command);
    return {status, readText(out), readText(err)};
}

}  // namespace tunebox::test
