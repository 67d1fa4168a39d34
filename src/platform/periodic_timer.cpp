#include "platform/periodic_timer.h"

namespace tunebox {

struct TimerService::Event {
    std::function<void()> tick;
    Clock::Duration period;
    std::atomic<bool> killed{false};
    std::thread thread;
};

namespace {

bool inRange(uint32_t periodMs) {
    return periodMs >= kTimerPeriodMin && periodMs <= kTimerPeriodMax;
}

}  // namespace

TimerService::TimerService(Clock& clock) : clock_(clock) {}

TimerService::~TimerService() {
    while (true) {
        uint32_t id = 0;
        {
            std::lock_guard lock(mutex_);
            if (events_.empty()) {
                break;
            }
            id = events_.begin()->first;
        }
        killEvent(id);
    }
}

int TimerService::getDevCaps(TimerCaps& caps) const {
    caps = {kTimerPeriodMin, kTimerPeriodMax};
    return 1;
}

int TimerService::beginPeriod(uint32_t periodMs) {
    if (!inRange(periodMs)) {
        return 0;
    }
    std::lock_guard lock(mutex_);
    periods_.insert(periodMs);
    return 1;
}

int TimerService::endPeriod(uint32_t periodMs) {
    std::lock_guard lock(mutex_);
    const auto found = periods_.find(periodMs);
    if (found == periods_.end()) {
        return 0;
    }
    periods_.erase(found);
    return 1;
}

uint32_t TimerService::setEvent(uint32_t delayMs, uint32_t resolutionMs,
                                std::function<void()> tick) {
    (void)resolutionMs;  // a thread per event keeps every period exact enough
    if (!inRange(delayMs) || !tick) {
        return 0;
    }
    auto event = std::make_shared<Event>();
    event->tick = std::move(tick);
    event->period = std::chrono::milliseconds(delayMs);
    std::lock_guard lock(mutex_);
    const uint32_t id = nextId_++;
    event->thread = std::thread([&clock = clock_, event] { run(clock, *event); });
    events_.emplace(id, std::move(event));
    return id;
}

int TimerService::killEvent(uint32_t id) {
    std::shared_ptr<Event> event;
    {
        std::lock_guard lock(mutex_);
        const auto found = events_.find(id);
        if (found == events_.end()) {
            return 0;
        }
        event = std::move(found->second);
        events_.erase(found);
    }
    event->killed = true;
    clock_.wake();
    if (event->thread.get_id() == std::this_thread::get_id()) {
        // Killed from its own tick: the thread holds the event and ends
        // after this tick returns.
        event->thread.detach();
    } else {
        event->thread.join();
    }
    return 1;
}

void TimerService::run(Clock& clock, Event& event) {
    // Deadlines advance by whole periods from the start, so a late tick does
    // not shift the ones after it.
    auto deadline = clock.now() + event.period;
    bool afterWork = false;
    while (clock.sleepUntil(deadline, event.killed, afterWork)) {
        event.tick();
        if (event.killed) {
            clock.workDone();
            return;
        }
        afterWork = true;
        deadline += event.period;
    }
}

}  // namespace tunebox
