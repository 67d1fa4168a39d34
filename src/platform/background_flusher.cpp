#include "platform/background_flusher.h"

#include <fcntl.h>
#include <unistd.h>

namespace tunebox {

BackgroundFlusher::BackgroundFlusher(int descriptor)
    : descriptor_(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0)), failed_(descriptor_ < 0) {
    if (descriptor_ >= 0) {
        thread_ = std::thread([this] { run(); });
    }
}

BackgroundFlusher::~BackgroundFlusher() {
    finish();
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

void BackgroundFlusher::request() {
    {
        std::lock_guard lock(mutex_);
        if (quitting_) {
            return;
        }
        pending_ = true;
    }
    wake_.notify_one();
}

int BackgroundFlusher::failed() const {
    std::lock_guard lock(mutex_);
    return failed_ ? 1 : 0;
}

int BackgroundFlusher::finish() {
    {
        std::lock_guard lock(mutex_);
        quitting_ = true;
    }
    wake_.notify_one();
    if (thread_.joinable()) {
        thread_.join();
    }
    return failed() ? 0 : 1;
}

void BackgroundFlusher::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return pending_ || quitting_; });
        if (!pending_) {
            return;
        }
        pending_ = false;
        // The lock is not held across the flush: a request made meanwhile
        // must not wait for the disk.
        lock.unlock();
        const bool flushed = ::fdatasync(descriptor_) == 0;
        lock.lock();
        failed_ = failed_ || !flushed;
    }
}

}  // namespace tunebox
