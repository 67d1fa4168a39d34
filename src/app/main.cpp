#include <cstdlib>
#include <iostream>
#include <string_view>

#include "app/cli/commands.h"
#include "app/gui/run_dialog.h"
#include "core/diagnostic_log.h"

namespace {

// Without any of these Qt finds no platform to open a window on and aborts
// the process.
bool displayAvailable() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            return true;
        }
    }
    return false;
}

// Every parse error is one line, like every other refusal.
std::string oneLineFailure(const CLI::App*, const CLI::Error& error) {
    return std::string("tunebox: ") + error.what() + " (see --help)\n";
}

}  // namespace

int main(int argc, char** argv) {
    // Off, as it always was; TUNEBOX_LOG=1 switches on the records meant for
    // finding faults (such as each correction of a take's delay).
    const char* logSwitch = std::getenv("TUNEBOX_LOG");
    tunebox::logInit(logSwitch != nullptr && std::string_view(logSwitch) == "1" ? 1 : 0);

    CLI::App app{"Tunebox: sing over an accompaniment and record the take"};
    app.failure_message(oneLineFailure);  // before the subcommands, which copy it
    app.require_subcommand(0, 1);
    std::string language;
    app.add_option("--lang", language,
                   "Language of the main window (else the setting UI/LANG, else the locale's)")
        ->check(CLI::IsMember({"ja", "en"}));
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
    tunebox::cli::registerRepairCommand(app, status);
    tunebox::cli::registerRemixCommand(app, status);
    tunebox::cli::registerExportCommand(app, status);
    tunebox::cli::registerLyricsCommand(app, status);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    }
    if (!app.get_subcommands().empty()) {
        return status;
    }
    if (!displayAvailable()) {
        std::cerr << "tunebox: no display: the main window cannot open here; use a subcommand, "
                     "see --help\n";
        return 1;
    }
    return tunebox::gui::runMainDialog(argc, argv, language);
}
