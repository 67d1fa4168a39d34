#pragma once
// `tunebox` without a subcommand: the main dialog, run modally. The program
// ends when it closes.

namespace tunebox::gui {

int runMainDialog(int& argc, char** argv);

}  // namespace tunebox::gui
