#pragma once
// A temporary working directory with a fresh diagnostic log in it, and the
// messages that reached that log, oldest slot first.

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "core/diagnostic_log.h"
#include "support/temp_dir.h"

namespace tunebox::test {

class LogDirectory {
  public:
    LogDirectory() {
        dir_.enter();
        logInit(0);
    }

    std::vector<std::string> messages() const {
        std::ifstream in(logPath(), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(in), {}};
        std::vector<std::string> found;
        constexpr std::size_t kMessageStart = 2 + kLogStampBytes;
        for (std::size_t slot = kLogSlotBytes; slot + kLogSlotBytes <= bytes.size();
             slot += kLogSlotBytes) {
            std::string message = bytes.substr(slot + kMessageStart, kLogMessageBytes);
            message.erase(message.find_last_not_of(' ') + 1);
            found.push_back(message);
        }
        return found;
    }

    const TempDir& dir() const { return dir_; }

  private:
    TempDir dir_;
};

}  // namespace tunebox::test
