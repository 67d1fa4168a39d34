#include "app/cli/take_loop.h"

#include <unistd.h>

#include <csignal>
#include <iostream>

#include "playback/wav_length.h"

namespace tunebox::cli {
namespace {

// A signal cannot wake the dispatcher's wait, so the loop looks at the
// interrupt flag this often: a Ctrl-C keeps at most this much sound after it.
constexpr auto kTurn = std::chrono::milliseconds(20);
constexpr auto kTurnsPerTick = kTickMilliseconds / kTurn.count();
constexpr int kMeterSegments = 12;

std::string bar(int32_t level) {
    const double lit = level * double(kMeterSegments) / 32767.0;
    std::string text;
    for (int i = 0; i < kMeterSegments; ++i) {
        text += i < lit ? '#' : '.';
    }
    return text;
}

void showProgress(CommandLineTake& take, bool showDelay) {
    std::cout << '\r' << formatSectorTime(take.capture().capturePosition()) << "  "
              << levelBars(take.firstLevel(), take.secondLevel());
    if (showDelay) {
        std::cout << "  delay " << take.capture().syncMx().currentDelay() << " bytes";
    }
    std::cout << "   " << std::flush;
}

bool keepsRunning(CommandLineTake& take, const InterruptFlag& interrupt) {
    return !interrupt.raised() && take.capture().isActive() &&
           take.capture().fault() == CaptureFault::kNone;
}

// Ctrl-C is the way to end a take, so it ends like the accompaniment's end.
// Any other signal (the session closing, a service manager stopping us) is
// said, and passed on in the exit status once the file is finished.
int stoppedStatus(const CommandLineTake& take, int signal) {
    if (signal == 0 || signal == SIGINT) {
        return 0;
    }
    std::cerr << "tunebox: stopped by " << signalName(signal);
    if (!take.output().empty()) {
        std::cerr << "; " << take.output() << " is complete";
    }
    std::cerr << '\n';
    return signalExitStatus(signal);
}

}  // namespace

std::string levelBars(int32_t first, int32_t second) {
    return "L " + bar(first) + "  R " + bar(second);
}

int runTake(CommandLineTake& take, bool showDelay, const InterruptFlag& interrupt,
            LyricPrompt* lyrics) {
    const bool terminal = ::isatty(STDOUT_FILENO) == 1;
    if (terminal && lyrics) {
        std::cout << LyricPrompt::reserveRows();
    }
    for (int turn = 1; keepsRunning(take, interrupt); ++turn) {
        take.runFor(kTurn);
        // Every turn, so that a line changes within a turn of being heard.
        if (terminal && lyrics) {
            std::cout << lyrics->follow(take.controller().accompanimentPlayer(),
                                        take.accompanimentRunStart())
                      << std::flush;
        }
        if (turn % kTurnsPerTick != 0) {
            continue;
        }
        // The accompaniment's tick ends the take when it has played out.
        take.tick();
        if (terminal && take.capture().isActive()) {
            showProgress(take, showDelay);
        }
    }
    const CaptureFault fault = take.capture().fault();
    take.controller().stopRecorder();
    if (terminal) {
        std::cout << '\n';
    }
    if (fault != CaptureFault::kNone || take.capture().fault() != CaptureFault::kNone) {
        std::cerr << "tunebox: " << take.capture().lastError() << '\n';
        return kExitTakeFailed;
    }
    return stoppedStatus(take, interrupt.signal());
}

}  // namespace tunebox::cli
