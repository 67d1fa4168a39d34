#pragma once
// The capture notices' road onto the dialog's thread: each post queues the
// task and wakes the Qt event loop to run it, and a stop that waits for its
// buffers can still run the queue by hand.

#include <QObject>

#include "platform/queue_dispatcher.h"

namespace tunebox::gui {

class QtDispatcher final : public QObject, public Dispatcher {
  public:
    void post(DispatchTask task) override;
    int pumpPending() override { return queue_.pumpPending(); }
    void waitForWork(std::chrono::milliseconds timeout) override { queue_.waitForWork(timeout); }

  private:
    QueueDispatcher queue_;
};

}  // namespace tunebox::gui
