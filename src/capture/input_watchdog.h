#pragma once
// Notices an input device that has gone quiet: a capture runs on buffers
// coming back, and a device that stops handing them back (a wedged driver,
// a sound server that keeps the stream open but sends nothing) would
// otherwise only be found out when the singer presses STOP.
//
// The check runs on a periodic timer on the devices' own clock, so it needs
// nothing from the owner's loop, and a simulated clock drives it exactly.

#include <atomic>
#include <cstdint>
#include <functional>

#include "platform/clock.h"
#include "platform/periodic_timer.h"

namespace tunebox {

class InputWatchdog {
  public:
    static constexpr std::chrono::seconds kSilenceLimit{2};

    InputWatchdog(TimerService& timers, Clock& clock) : timers_(timers), clock_(clock) {}
    ~InputWatchdog() { disarm(); }
    InputWatchdog(const InputWatchdog&) = delete;
    InputWatchdog& operator=(const InputWatchdog&) = delete;

    // Starts watching from now. `onSilence` runs once, on the timer's
    // thread, when no delivery has been noted for kSilenceLimit. Returns
    // false when no timer could be set.
    bool arm(std::function<void()> onSilence);
    // Any thread: the device has just handed a buffer back.
    void noteDelivery();
    // Owning thread; waits for a check in progress to end.
    void disarm();

  private:
    void check();

    TimerService& timers_;
    Clock& clock_;
    std::function<void()> onSilence_;
    std::atomic<Clock::Duration::rep> lastDelivery_{0};
    bool told_ = false;  // timer thread only, between arm and disarm
    uint32_t timer_ = 0;
};

}  // namespace tunebox
