#pragma once
// Hands work from any thread to the one thread that owns an engine. Device
// callbacks only post; the owner runs the tasks in its loop, or by hand
// (`pumpPending`) while it waits for buffers to come back.

#include <chrono>
#include <functional>

namespace tunebox {

using DispatchTask = std::function<void()>;

class Dispatcher {
  public:
    virtual ~Dispatcher() = default;

    // Safe from any thread; the task runs later on the owning thread.
    virtual void post(DispatchTask task) = 0;

    // Owning thread only: runs every task queued so far, and those they post
    // meanwhile. Returns how many ran.
    virtual int pumpPending() = 0;

    // Owning thread only: waits until a task is queued or `timeout` passed.
    virtual void waitForWork(std::chrono::milliseconds timeout) = 0;
};

}  // namespace tunebox
