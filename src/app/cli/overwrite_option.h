#pragma once
// No command replaces a file by surprise: one that writes a file refuses a
// file already there unless --overwrite says to replace it. The refusal
// comes before anything is opened or played.

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

namespace tunebox::cli {

void addOverwriteOption(CLI::App& command, bool& overwrite);

// Why `output` may not be written: it names an existing regular file and
// `overwrite` is off. Standard output ("-" or a path to the file it was
// redirected to), a device such as /dev/null or a pipe are written to, not
// replaced, so they are never refused.
std::optional<std::string> overwriteRefusal(const std::string& output, bool overwrite);

}  // namespace tunebox::cli
