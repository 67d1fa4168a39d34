#include "app/cli/commands.h"
#include "app/diagnostic_log.h"
#include "app/gui/run_dialog.h"

int main(int argc, char** argv) {
    tunebox::logInit(0);

    CLI::App app{"Tunebox: sing over an accompaniment and record the take"};
    app.require_subcommand(0, 1);
    int status = 0;
    tunebox::cli::registerVersionCommand(app, status);
    tunebox::cli::registerTuneCommand(app, status);
    tunebox::cli::registerInfoCommand(app, status);
    tunebox::cli::registerDecodeCommand(app, status);
    tunebox::cli::registerFxCommand(app, status);
    tunebox::cli::registerCalibrateCommand(app, status);
    tunebox::cli::registerRecordCommand(app, status);
    tunebox::cli::registerMonitorCommand(app, status);
    tunebox::cli::registerDemoCommand(app, status);
    tunebox::cli::registerPlayCommand(app, status);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    }
    if (app.get_subcommands().empty()) {
        return tunebox::gui::runMainDialog(argc, argv);
    }
    return status;
}
