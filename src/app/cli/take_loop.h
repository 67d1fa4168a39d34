#pragma once
// The command line's event loop for a started take: runs the capture notices
// and the players' ticks until the accompaniment's end closes the take, a
// fault stops it or a signal comes (Ctrl-C, SIGTERM, SIGHUP); then the
// recorder STOP, so the output file is always finished. Shows time, the
// two-bar level and the delay on a terminal, and the lyrics above them.

#include "app/cli/command_line_take.h"
#include "app/cli/interrupt_flag.h"
#include "app/cli/lyric_prompt.h"

namespace tunebox::cli {

// Exit status of a take that a fault cut short.
inline constexpr int kExitTakeFailed = 1;

// `interrupt` is caught from before the take started, so that a signal in
// between is not lost. Returns 0 (also after Ctrl-C), kExitTakeFailed after
// printing the fault's one line, or after SIGTERM or SIGHUP the shell's
// status for that signal after one line saying the file was kept.
// `lyrics`, when given, follows the accompaniment as it is heard.
int runTake(CommandLineTake& take, bool showDelay, const InterruptFlag& interrupt,
            LyricPrompt* lyrics = nullptr);

// The two meter bars as text: 12 segments each, lit below level x 12 / 32767.
std::string levelBars(int32_t first, int32_t second);

}  // namespace tunebox::cli
