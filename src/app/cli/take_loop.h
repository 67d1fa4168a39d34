#pragma once
// The command line's stand-in for the dialog's timer: runs a started session
// until the accompaniment ends, capture closes by itself, a fault stops it or
// the user presses Ctrl-C; then the recorder STOP, so the output file is
// always finished. Shows time, the two-bar level and the delay on a terminal.

#include "app/cli/recording_session.h"

namespace tunebox::cli {

// Exit status of a take that a fault cut short.
inline constexpr int kExitTakeFailed = 1;

// Returns 0, or kExitTakeFailed after printing the fault's one line.
int runTake(RecordingSession& session, bool showDelay);

// The two meter bars as text: 12 segments each, lit below level x 12 / 32767.
std::string levelBars(int32_t first, int32_t second);

}  // namespace tunebox::cli
