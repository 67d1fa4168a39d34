#include "app/cli/take_loop.h"

#include <unistd.h>

#include <csignal>
#include <iostream>

#include "playback/wav_length.h"

namespace tunebox::cli {
namespace {

constexpr auto kTurn = std::chrono::milliseconds(100);
constexpr auto kTurnsPerTick = kTickMilliseconds / kTurn.count();
constexpr int kMeterSegments = 12;

volatile std::sig_atomic_t interrupted = 0;

void onInterrupt(int) {
    interrupted = 1;
}

// Ctrl-C ends the take through STOP instead of killing the process, for the
// lifetime of one take.
class InterruptGuard {
  public:
    InterruptGuard() {
        interrupted = 0;
        previous_ = std::signal(SIGINT, onInterrupt);
    }
    ~InterruptGuard() { std::signal(SIGINT, previous_); }
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

  private:
    void (*previous_)(int);
};

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

bool keepsRunning(CommandLineTake& take) {
    return interrupted == 0 && take.capture().isActive() &&
           take.capture().fault() == CaptureFault::kNone;
}

}  // namespace

std::string levelBars(int32_t first, int32_t second) {
    return "L " + bar(first) + "  R " + bar(second);
}

int runTake(CommandLineTake& take, bool showDelay) {
    InterruptGuard guard;
    const bool terminal = ::isatty(STDOUT_FILENO) == 1;
    for (int turn = 1; keepsRunning(take); ++turn) {
        take.runFor(kTurn);
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
    return 0;
}

}  // namespace tunebox::cli
