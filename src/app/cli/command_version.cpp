#include <iostream>

#include "app/cli/commands.h"

namespace tunebox::cli {

std::string versionText() {
    return std::string("tunebox ") + TUNEBOX_VERSION;
}

void registerVersionCommand(CLI::App& app, int& status) {
    app.set_version_flag("--version", versionText(), "Print the program's version");
    auto* command = app.add_subcommand("version", "Print the program's version");
    command->callback([&status] {
        std::cout << versionText() << "\n";
        status = 0;
    });
}

}  // namespace tunebox::cli
