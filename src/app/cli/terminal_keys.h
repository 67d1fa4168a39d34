#pragma once
// Single key presses from a terminal, for commands that run a while: the
// terminal stops echoing and hands over each key at once, and is put back as
// it was when the object goes. On anything but a terminal it reads nothing.

#include <chrono>
#include <memory>

namespace tunebox::cli {

class TerminalKeys {
  public:
    TerminalKeys();
    ~TerminalKeys();
    TerminalKeys(const TerminalKeys&) = delete;
    TerminalKeys& operator=(const TerminalKeys&) = delete;

    // The next key pressed within `wait`, or -1. Without a terminal it just
    // waits.
    int nextKey(std::chrono::milliseconds wait);

  private:
    struct Saved;
    std::unique_ptr<Saved> saved_;  // null when stdin is not a terminal
};

}  // namespace tunebox::cli
