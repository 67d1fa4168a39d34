#include "platform/clock.h"

namespace tunebox {

SteadyClock::SteadyClock() : origin_(std::chrono::steady_clock::now()) {}

Clock::Duration SteadyClock::now() {
    return std::chrono::steady_clock::now() - origin_;
}

bool SteadyClock::sleepUntil(Duration deadline, const std::atomic<bool>& cancelled, bool) {
    std::unique_lock lock(mutex_);
    return !wake_.wait_until(lock, origin_ + deadline, [&] { return cancelled.load(); });
}

void SteadyClock::wake() {
    std::lock_guard lock(mutex_);
    wake_.notify_all();
}

Clock::Duration VirtualClock::now() {
    return Duration(now_.load());
}

bool VirtualClock::sleepUntil(Duration deadline, const std::atomic<bool>& cancelled,
                              bool afterWork) {
    std::unique_lock lock(mutex_);
    const auto entry = deadlines_.insert(deadline.count());
    if (afterWork) {
        --working_;
        changed_.notify_all();
    }
    changed_.wait(lock, [&] { return cancelled.load() || now_.load() >= deadline.count(); });
    deadlines_.erase(entry);
    const bool due = !cancelled.load();
    if (due) {
        ++working_;
    }
    changed_.notify_all();
    return due;
}

void VirtualClock::wake() {
    std::lock_guard lock(mutex_);
    changed_.notify_all();
}

void VirtualClock::workDone() {
    std::lock_guard lock(mutex_);
    --working_;
    changed_.notify_all();
}

void VirtualClock::advanceTo(Duration time) {
    std::unique_lock lock(mutex_);
    now_.store(time.count());
    changed_.notify_all();
    changed_.wait(lock, [this] { return working_ == 0 && !sleeperDue(); });
}

bool VirtualClock::sleeperDue() const {
    return !deadlines_.empty() && *deadlines_.begin() <= now_.load();
}

}  // namespace tunebox
