#pragma once
// `tunebox` without a subcommand: the main dialog, run modally. The program
// ends when it closes.

#include <string>

namespace tunebox::gui {

class MainDialog;
class TerminationSignals;

// 0, or 128 plus the number of a termination signal that closed the dialog.
// The language is "ja", "en" or empty for the settings' or the locale's.
int runMainDialog(int& argc, char** argv, const std::string& language);

// The end of the desktop session ends a take the way STOP does. The session
// manager's request to save finishes it in place, since the program may be
// killed without a further word once it has answered; SIGTERM and SIGHUP
// close the dialog, which finishes it.
void endTakeWithTheSession(MainDialog& dialog, const TerminationSignals& terminations);

}  // namespace tunebox::gui
