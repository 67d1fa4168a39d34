#pragma once
// Test material made at test time by the command-line tools sox and lame.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/test_files.h"

namespace tunebox::test {

// Runs a shell command; the test fails when it does.
inline void runTool(const std::string& command) {
    ASSERT_EQ(std::system((command + " >/dev/null 2>&1").c_str()), 0) << command;
}

}  // namespace tunebox::test
