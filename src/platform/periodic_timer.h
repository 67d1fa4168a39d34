#pragma once
// Periodic timer events with the multimedia timer's rules: periods in
// milliseconds between a minimum and a maximum, a resolution period that is
// begun and ended in pairs, events identified by a non-zero number and
// killed by it. Calls return 1 for success and 0 for failure.

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/clock.h"

namespace tunebox {

struct TimerCaps {
    uint32_t periodMin = 0;
    uint32_t periodMax = 0;
};

inline constexpr uint32_t kTimerPeriodMin = 1;
inline constexpr uint32_t kTimerPeriodMax = 1000000;

class TimerService {
  public:
    explicit TimerService(Clock& clock);
    ~TimerService();  // kills what is still running
    TimerService(const TimerService&) = delete;
    TimerService& operator=(const TimerService&) = delete;

    int getDevCaps(TimerCaps& caps) const;
    int beginPeriod(uint32_t periodMs);
    int endPeriod(uint32_t periodMs);
    // A periodic event every `delayMs`, first after one period, on a thread of
    // its own. Returns its id, 0 when the delay is out of range.
    uint32_t setEvent(uint32_t delayMs, uint32_t resolutionMs, std::function<void()> tick);
    // May be called from the event's own tick; then the tick finishes first
    // and no other follows.
    int killEvent(uint32_t id);

  private:
    struct Event;
    static void run(Clock& clock, Event& event);

    Clock& clock_;
    std::mutex mutex_;
    std::map<uint32_t, std::shared_ptr<Event>> events_;
    std::multiset<uint32_t> periods_;
    uint32_t nextId_ = 1;
};

}  // namespace tunebox
