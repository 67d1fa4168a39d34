#include "app/cli/overwrite_option.h"

#include <unistd.h>

#include <filesystem>

#include "platform/file_identity.h"

namespace tunebox::cli {

void addOverwriteOption(CLI::App& command, bool& overwrite) {
    command.add_flag("--overwrite", overwrite, "Replace the output file when it exists");
}

std::optional<std::string> overwriteRefusal(const std::string& output, bool overwrite) {
    std::error_code error;
    if (overwrite || output == "-" || !std::filesystem::is_regular_file(output, error)) {
        return std::nullopt;
    }
    // "/dev/stdout" redirected to a file: the shell has made that file
    // already, at the user's word.
    if (sameFileAsDescriptor(output, STDOUT_FILENO)) {
        return std::nullopt;
    }
    return "already exists; pass --overwrite to replace it";
}

}  // namespace tunebox::cli
