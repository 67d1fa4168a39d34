#pragma once
// `tunebox` without a subcommand: the main dialog, run modally. The program
// ends when it closes.

namespace tunebox::gui {

class MainDialog;
class TerminationSignals;

// 0, or 128 plus the number of a termination signal that closed the dialog.
int runMainDialog(int& argc, char** argv);

// The end of the desktop session ends a take the way STOP does. The session
// manager's request to save finishes it in place, since the program may be
// killed without a further word once it has answered; SIGTERM and SIGHUP
// close the dialog, which finishes it.
void endTakeWithTheSession(MainDialog& dialog, const TerminationSignals& terminations);

}  // namespace tunebox::gui
