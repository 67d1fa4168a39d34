#include "app/cli/interrupt_flag.h"

#include <array>
#include <atomic>
#include <csignal>

namespace tunebox::cli {
namespace {

constexpr std::array kCaught{SIGINT, SIGTERM, SIGHUP};

std::atomic<int> caughtSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "set from a signal handler");
std::array<struct sigaction, kCaught.size()> previous{};

void onSignal(int signal) {
    int none = 0;
    caughtSignal.compare_exchange_strong(none, signal);
}

}  // namespace

InterruptFlag::InterruptFlag() {
    caughtSignal = 0;
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < kCaught.size(); ++i) {
        sigaction(kCaught[i], &action, &previous[i]);
    }
}

InterruptFlag::~InterruptFlag() {
    for (std::size_t i = 0; i < kCaught.size(); ++i) {
        sigaction(kCaught[i], &previous[i], nullptr);
    }
}

int InterruptFlag::signal() const {
    return caughtSignal;
}

int signalExitStatus(int signal) {
    return 128 + signal;
}

const char* signalName(int signal) {
    switch (signal) {
        case SIGINT:
            return "SIGINT";
        case SIGTERM:
            return "SIGTERM";
        case SIGHUP:
            return "SIGHUP";
        default:
            return "a signal";
    }
}

}  // namespace tunebox::cli
