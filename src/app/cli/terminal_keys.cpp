#include "app/cli/terminal_keys.h"

#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <thread>

namespace tunebox::cli {

struct TerminalKeys::Saved {
    termios settings{};
};

TerminalKeys::TerminalKeys() {
    auto saved = std::make_unique<Saved>();
    if (isatty(STDIN_FILENO) != 1 || tcgetattr(STDIN_FILENO, &saved->settings) != 0) {
        return;
    }
    termios raw = saved->settings;
    raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;
    if (tcsetattr(STDIN_FILENO, TCSANOW, &raw) == 0) {
        saved_ = std::move(saved);
    }
}

TerminalKeys::~TerminalKeys() {
    if (saved_) {
        tcsetattr(STDIN_FILENO, TCSANOW, &saved_->settings);
    }
}

int TerminalKeys::nextKey(std::chrono::milliseconds wait) {
    if (!saved_) {
        std::this_thread::sleep_for(wait);
        return -1;
    }
    pollfd input{STDIN_FILENO, POLLIN, 0};
    if (poll(&input, 1, static_cast<int>(wait.count())) != 1 || (input.revents & POLLIN) == 0) {
        return -1;
    }
    unsigned char key = 0;
    return read(STDIN_FILENO, &key, 1) == 1 ? key : -1;
}

}  // namespace tunebox::cli
