#pragma once
// A file size limit stands in for a full disk: writes past it fail, and the
// signal that would end the process meanwhile is ignored.

#include <sys/resource.h>

#include <csignal>

namespace tunebox::test {

class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) : previous_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &saved_);
        rlimit limit = saved_;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &saved_);
        std::signal(SIGXFSZ, previous_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  private:
    rlimit saved_{};
    void (*previous_)(int);
};

}  // namespace tunebox::test
