#include "platform/queue_dispatcher.h"

namespace tunebox {

void QueueDispatcher::post(DispatchTask task) {
    {
        std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    posted_.notify_one();
}

bool QueueDispatcher::takeOne(DispatchTask& task) {
    std::lock_guard lock(mutex_);
    if (tasks_.empty()) {
        return false;
    }
    task = std::move(tasks_.front());
    tasks_.pop_front();
    return true;
}

// Tasks run outside the lock: a task may post, and a device thread must
// never wait for a task to finish.
int QueueDispatcher::pumpPending() {
    int ran = 0;
    DispatchTask task;
    while (takeOne(task)) {
        task();
        ++ran;
    }
    return ran;
}

void QueueDispatcher::waitForWork(std::chrono::milliseconds timeout) {
    std::unique_lock lock(mutex_);
    posted_.wait_for(lock, timeout, [this] { return !tasks_.empty(); });
}

}  // namespace tunebox
