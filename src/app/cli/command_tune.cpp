#include <memory>
#include <string>

#include "app/cli/commands.h"
#include "app/cli/demo_tune_file.h"

namespace tunebox::cli {

void registerTuneCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand("tune", "Write a short demo accompaniment as a WAV file");
    auto path = std::make_shared<std::string>();
    command->add_option("OUT", *path, "The WAV file to write")->required();
    command->callback([&status, path] { status = writeDemoTuneFile(*path); });
}

}  // namespace tunebox::cli
