#pragma once
// A private X server for one test run: Xvfb on the first free display,
// which it names itself (-displayfd), stopped when this object goes.

#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>

namespace tunebox::test {

// The Xvfb program on PATH, or none when it is not installed.
inline std::optional<std::filesystem::path> findXvfb() {
    const char* path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "/usr/bin:/bin");
    for (std::string folder; std::getline(folders, folder, ':');) {
        const std::filesystem::path candidate = std::filesystem::path(folder) / "Xvfb";
        if (access(candidate.c_str(), X_OK) == 0) {
            return candidate;
        }
    }
    return std::nullopt;
}

class XvfbServer {
  public:
    explicit XvfbServer(const std::filesystem::path& program) {
        int ready[2];
        if (pipe(ready) != 0) {
            return;
        }
        pid_ = fork();
        if (pid_ == 0) {
            // A test run that is killed takes its server with it.
            prctl(PR_SET_PDEATHSIG, SIGTERM);
            close(ready[0]);
            const std::string fd = std::to_string(ready[1]);
            execl(program.c_str(), "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", "1920x1200x24",
                  "-nolisten", "tcp", "-noreset", static_cast<char*>(nullptr));
            _exit(127);
        }
        close(ready[1]);
        display_ = readDisplay(ready[0]);
        close(ready[0]);
    }
    ~XvfbServer() {
        if (pid_ > 0) {
            kill(pid_, SIGTERM);
            waitpid(pid_, nullptr, 0);
        }
    }
    XvfbServer(const XvfbServer&) = delete;
    XvfbServer& operator=(const XvfbServer&) = delete;

    // ":N", or empty when the server did not come up.
    const std::string& display() const { return display_; }

  private:
    // Xvfb writes the display's number once it accepts connections.
    static std::string readDisplay(int fd) {
        std::string number;
        pollfd waiting{fd, POLLIN, 0};
        char c = 0;
        while (poll(&waiting, 1, 20000) > 0 && read(fd, &c, 1) == 1 && c != '\n') {
            number += c;
        }
        return number.empty() ? std::string() : ':' + number;
    }

    pid_t pid_ = -1;
    std::string display_;
};

}  // namespace tunebox::test
