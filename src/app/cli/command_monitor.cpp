#include <iostream>
#include <memory>

#include "app/cli/commands.h"
#include "app/cli/take_loop.h"
#include "platform/settings.h"

namespace tunebox::cli {
namespace {

int monitor() {
    const InterruptFlag interrupt;
    SyncSettings settings;
    readSyncSettings(settings);
    const std::shared_ptr<AudioBackend> backend = makeAudioBackendFromEnvironment();
    CommandLineTake take(*backend);
    if (!take.monitor(settings.manualDelayFlag == 1 ? 1 : 0)) {
        std::cerr << "tunebox: " << take.error() << '\n';
        return kExitBadInput;
    }
    return runTake(take, false, interrupt);
}

}  // namespace

void registerMonitorCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand(
        "monitor", "Show the microphone level on two bars, recording nothing (Ctrl-C stops)");
    command->callback([&status] { status = monitor(); });
}

}  // namespace tunebox::cli
