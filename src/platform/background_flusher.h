#pragma once
// Pushes a file's written data to the disk on a thread of its own, so that
// whoever writes the file never waits for the device. A request made while
// another is still waiting is merged with it: at most one is pending.

#include <condition_variable>
#include <mutex>
#include <thread>

namespace tunebox {

class BackgroundFlusher {
  public:
    // Works on a duplicate of `descriptor`, so the caller may close its own
    // while a flush is still under way.
    explicit BackgroundFlusher(int descriptor);
    ~BackgroundFlusher();
    BackgroundFlusher(const BackgroundFlusher&) = delete;
    BackgroundFlusher& operator=(const BackgroundFlusher&) = delete;

    // Asks for everything written so far to reach the disk; returns at once.
    void request();
    // 1 once a flush has failed (or the descriptor could not be taken).
    int failed() const;
    // Completes the pending request and stops the thread; later requests are
    // ignored. Returns 1 when every flush succeeded, else 0.
    int finish();

  private:
    void run();

    int descriptor_;
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    bool pending_ = false;
    bool quitting_ = false;
    bool failed_ = false;
    std::thread thread_;
};

}  // namespace tunebox
