#include <cmath>
#include <iostream>
#include <memory>
#include <string>

#include "app/cli/commands.h"
#include "app/cli/overwrite_option.h"
#include "session/take_remix.h"

namespace tunebox::cli {
namespace {

struct RemixArguments {
    std::string take;
    double nudgeMs = 0.0;
    std::string output;  // empty: the take itself
    bool overwrite = false;
};

int remix(const RemixArguments& arguments) {
    const std::string output = arguments.output.empty() ? arguments.take : arguments.output;
    if (!std::isfinite(arguments.nudgeMs) || std::fabs(arguments.nudgeMs) > kLargestNudgeMs) {
        std::cerr << "tunebox: --nudge: at most " << kLargestNudgeMs << " ms either way\n";
        return kExitBadInput;
    }
    if (const auto problem = overwriteRefusal(output, arguments.overwrite)) {
        std::cerr << "tunebox: " << output << ": " << *problem << '\n';
        return kExitBadInput;
    }
    const std::string problem = remixTake(
        {.take = arguments.take, .output = output, .nudge = nudgeFrames(arguments.nudgeMs)});
    if (!problem.empty()) {
        std::cerr << "tunebox: " << problem << '\n';
        return kExitBadInput;
    }
    std::cout << output << ": voice moved by " << nudgeFrames(arguments.nudgeMs) << " frames\n";
    return 0;
}

}  // namespace

void registerRemixCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand(
        "remix", "Mix a take again from its voice file with the voice moved earlier or later");
    auto arguments = std::make_shared<RemixArguments>();
    command->add_option("TAKE", arguments->take, "A take recorded with its voice file")->required();
    command
        ->add_option("--nudge", arguments->nudgeMs,
                     "Milliseconds to move the voice by (positive: later)")
        ->required();
    command->add_option("-o,--output", arguments->output,
                        "Where to write the new take (default: over the take)");
    addOverwriteOption(*command, arguments->overwrite);
    command->callback([&status, arguments] { status = remix(*arguments); });
}

}  // namespace tunebox::cli
