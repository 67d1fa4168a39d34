#include "app/cli/interrupt_flag.h"

#include <csignal>

#include <atomic>

namespace tunebox::cli {
namespace {

std::atomic<bool> interruptRaised{false};
struct sigaction previousInterrupt {};
struct sigaction previousTerminate {};

void onInterrupt(int) {
    interruptRaised = true;
}

}  // namespace

InterruptFlag::InterruptFlag() {
    interruptRaised = false;
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, &previousInterrupt);
    sigaction(SIGTERM, &action, &previousTerminate);
}

InterruptFlag::~InterruptFlag() {
    sigaction(SIGINT, &previousInterrupt, nullptr);
    sigaction(SIGTERM, &previousTerminate, nullptr);
}

bool InterruptFlag::raised() const {
    return interruptRaised;
}

}  // namespace tunebox::cli
