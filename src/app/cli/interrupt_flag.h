#pragma once
// Ctrl-C (SIGINT) and SIGTERM turned into a flag that a command's loop polls,
// so that it can stop its engines cleanly instead of dying with a device
// open. The previous handlers come back when the object goes.

namespace tunebox::cli {

class InterruptFlag {
  public:
    InterruptFlag();
    ~InterruptFlag();
    InterruptFlag(const InterruptFlag&) = delete;
    InterruptFlag& operator=(const InterruptFlag&) = delete;

    bool raised() const;
};

// The exit status of a command stopped by an interrupt.
inline constexpr int kExitInterrupted = 130;

}  // namespace tunebox::cli
