#include <iostream>
#include <memory>
#include <string>

#include "app/cli/commands.h"
#include "app/cli/input_checks.h"
#include "playback/wav_repair.h"

namespace tunebox::cli {
namespace {

int repairFile(const std::string& path) {
    if (const auto problem = inputRefusal(path)) {
        return refuse(path, *problem, kExitBadInput);
    }
    const RepairResult result = repairWav(path);
    if (!result.repaired && !result.alreadyFinished) {
        return refuse(path, result.message, kExitBadInput);
    }
    std::cout << path << ": " << result.message << "\n";
    return 0;
}

}  // namespace

void registerRepairCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand("repair", "Finish a WAV take whose recording was cut off");
    auto path = std::make_shared<std::string>();
    command->add_option("FILE", *path, "A WAV file")->required();
    command->callback([&status, path] { status = repairFile(*path); });
}

}  // namespace tunebox::cli
