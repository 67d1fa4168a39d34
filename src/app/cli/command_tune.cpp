#include <memory>
#include <string>

#include "app/cli/commands.h"
#include "app/cli/demo_tune_file.h"
#include "app/cli/input_checks.h"
#include "app/cli/overwrite_option.h"

namespace tunebox::cli {

void registerTuneCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand("tune", "Write a short demo accompaniment as a WAV file");
    struct TuneOptions {
        std::string path;
        bool overwrite = false;
    };
    auto options = std::make_shared<TuneOptions>();
    command->add_option("OUT", options->path, "The WAV file to write")->required();
    addOverwriteOption(*command, options->overwrite);
    command->callback([&status, options] {
        const auto problem = overwriteRefusal(options->path, options->overwrite);
        status = problem ? refuse(options->path, *problem, kExitBadInput)
                         : writeDemoTuneFile(options->path);
    });
}

}  // namespace tunebox::cli
