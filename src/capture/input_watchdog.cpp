#include "capture/input_watchdog.h"

namespace tunebox {
namespace {

// Fine enough that a lost device is reported within a tenth of a second of
// the limit, coarse enough to cost nothing.
constexpr uint32_t kCheckPeriodMs = 100;

}  // namespace

bool InputWatchdog::arm(std::function<void()> onSilence) {
    disarm();
    onSilence_ = std::move(onSilence);
    told_ = false;
    noteDelivery();
    timer_ = timers_.setEvent(kCheckPeriodMs, kCheckPeriodMs, [this] { check(); });
    return timer_ != 0;
}

void InputWatchdog::noteDelivery() {
    lastDelivery_.store(clock_.now().count(), std::memory_order_relaxed);
}

void InputWatchdog::disarm() {
    if (timer_ != 0) {
        timers_.killEvent(timer_);
        timer_ = 0;
    }
}

void InputWatchdog::check() {
    const Clock::Duration quiet =
        clock_.now() - Clock::Duration(lastDelivery_.load(std::memory_order_relaxed));
    if (told_ || quiet < kSilenceLimit) {
        return;
    }
    told_ = true;
    onSilence_();
}

}  // namespace tunebox
