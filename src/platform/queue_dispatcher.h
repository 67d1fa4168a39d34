#pragma once
// The dispatcher of the command line and the tests: a plain locked queue,
// emptied by whichever thread calls pumpPending (the owning thread).

#include <condition_variable>
#include <deque>
#include <mutex>

#include "platform/dispatcher.h"

namespace tunebox {

class QueueDispatcher final : public Dispatcher {
  public:
    void post(DispatchTask task) override;
    int pumpPending() override;
    void waitForWork(std::chrono::milliseconds timeout) override;

  private:
    bool takeOne(DispatchTask& task);

    std::mutex mutex_;
    std::condition_variable posted_;
    std::deque<DispatchTask> tasks_;
};

}  // namespace tunebox
