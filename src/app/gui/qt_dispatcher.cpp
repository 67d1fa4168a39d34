#include "app/gui/qt_dispatcher.h"

namespace tunebox::gui {

void QtDispatcher::post(DispatchTask task) {
    queue_.post(std::move(task));
    // A stop may have run the task by hand before this wake-up arrives; the
    // pump then simply finds the queue empty.
    QMetaObject::invokeMethod(
        this, [this] { queue_.pumpPending(); }, Qt::QueuedConnection);
}

}  // namespace tunebox::gui
