#pragma once
// The time base of periodic timers. Real devices run on the steady clock; the
// virtual devices bring their own clock so that timers and simulated audio
// advance together, at any speed.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>

namespace tunebox {

class Clock {
  public:
    using Duration = std::chrono::nanoseconds;

    virtual ~Clock() = default;
    virtual Duration now() = 0;
    // Sleeps until now() reaches `deadline` (true) or `cancelled` is set and
    // wake() called (false). After true, the caller does the work due at that
    // moment, then either sleeps again with `afterWork` set, which ends that
    // work in the same step, or calls workDone().
    virtual bool sleepUntil(Duration deadline, const std::atomic<bool>& cancelled,
                            bool afterWork) = 0;
    virtual void wake() = 0;
    virtual void workDone() {}
};

class SteadyClock final : public Clock {
  public:
    SteadyClock();
    Duration now() override;
    bool sleepUntil(Duration deadline, const std::atomic<bool>& cancelled, bool afterWork) override;
    void wake() override;

  private:
    const std::chrono::steady_clock::time_point origin_;
    std::mutex mutex_;
    std::condition_variable wake_;
};

// Advanced only by its owner; a sleeper whose moment has come holds the clock
// at that moment until it reports its work done, so a timer tick sees the
// simulated devices exactly where they are at that tick, at any speed. A
// sleeper going back to sleep ends its work and sets its next moment in one
// step: were there a gap between, the clock could run past that moment.
class VirtualClock final : public Clock {
  public:
    Duration now() override;
    bool sleepUntil(Duration deadline, const std::atomic<bool>& cancelled, bool afterWork) override;
    void wake() override;
    void workDone() override;

    // Moves time forward and waits until every sleeper due by then has
    // finished its work.
    void advanceTo(Duration time);

  private:
    bool sleeperDue() const;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::atomic<Duration::rep> now_{0};
    std::multiset<Duration::rep> deadlines_;
    int working_ = 0;
};

}  // namespace tunebox
