#pragma once
// Ctrl-C (SIGINT), SIGTERM and SIGHUP turned into a flag that a command's
// loop polls, so that it can stop its engines cleanly and finish its file
// instead of dying with a device open and a header unwritten. The flag
// keeps which signal came first. The previous handlers come back when the
// object goes.

namespace tunebox::cli {

class InterruptFlag {
  public:
    InterruptFlag();
    ~InterruptFlag();
    InterruptFlag(const InterruptFlag&) = delete;
    InterruptFlag& operator=(const InterruptFlag&) = delete;

    bool raised() const { return signal() != 0; }
    // The first signal caught, 0 while none has come.
    int signal() const;
};

// The shell's status for a command that `signal` stopped: 128 plus its number.
int signalExitStatus(int signal);

// "SIGINT", "SIGTERM" or "SIGHUP".
const char* signalName(int signal);

}  // namespace tunebox::cli
