#include "app/cli/start_option.h"

#include <cmath>

namespace tunebox::cli {
namespace {

std::string checkSeconds(const std::string& text) {
    double seconds = -1;
    const bool number = CLI::detail::lexical_cast(text, seconds);
    if (!number || !std::isfinite(seconds) || seconds < 0) {
        return "must be a number of seconds, 0 or more (got " + text + ")";
    }
    return {};
}

}  // namespace

CLI::Option* addStartOption(CLI::App& command, double& seconds, const std::string& description) {
    return command.add_option("--start", seconds, description)
        ->check(CLI::Validator(checkSeconds, "SECONDS"));
}

}  // namespace tunebox::cli
