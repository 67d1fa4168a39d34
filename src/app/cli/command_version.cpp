#include <iostream>

#include "app/cli/commands.h"

namespace tunebox::cli {

void registerVersionCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand("version", "Print the program's version");
    command->callback([&status] {
        std::cout << "tunebox 0.1.0\n";
        status = 0;
    });
}

}  // namespace tunebox::cli
