#include <iostream>
#include <memory>
#include <string>

#include "app/cli/commands.h"
#include "app/cli/input_checks.h"
#include "playback/wav_repair.h"
#include "session/voice_file.h"

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
    if (const auto voice = repairVoiceFile(path)) {
        if (!voice->repaired) {
            return refuse(voiceFilePath(path), voice->message, kExitBadInput);
        }
        std::cout << voiceFilePath(path) << ": " << voice->message << "\n";
    }
    return 0;
}

}  // namespace

void registerRepairCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand(
        "repair", "Finish a WAV take whose recording was cut off, and its voice file");
    auto path = std::make_shared<std::string>();
    command->add_option("FILE", *path, "A WAV file")->required();
    command->callback([&status, path] { status = repairFile(*path); });
}

}  // namespace tunebox::cli
