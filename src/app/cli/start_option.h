#pragma once
// The --start option of the commands that play an accompaniment.

#include <CLI/CLI.hpp>

namespace tunebox::cli {

// Seconds from the beginning: a number, 0 or more. A refusal names the rule
// instead of the largest number a double holds.
CLI::Option* addStartOption(CLI::App& command, double& seconds, const std::string& description);

}  // namespace tunebox::cli
