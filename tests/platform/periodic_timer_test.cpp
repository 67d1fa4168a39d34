#include "platform/periodic_timer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/virtual_audio.h"

namespace tunebox {
namespace {

TEST(PeriodicTimer, PeriodsOutsideTheCapsAndUnknownEventsAreRefused) {
    SteadyClock clock;
    TimerService timers(clock);
    TimerCaps caps;
    ASSERT_EQ(timers.getDevCaps(caps), 1);
    EXPECT_EQ(caps.periodMin, 1u);
    EXPECT_EQ(timers.beginPeriod(0), 0);
    EXPECT_EQ(timers.endPeriod(200), 0);  // never begun
    EXPECT_EQ(timers.beginPeriod(200), 1);
    EXPECT_EQ(timers.endPeriod(200), 1);
    EXPECT_EQ(timers.endPeriod(200), 0);
    EXPECT_EQ(timers.setEvent(0, 0, [] {}), 0u);
    EXPECT_EQ(timers.setEvent(caps.periodMax + 1, 0, [] {}), 0u);
    EXPECT_EQ(timers.killEvent(12345), 0);
}

TEST(PeriodicTimer, ASteadyEventTicksUntilKilled) {
    SteadyClock clock;
    TimerService timers(clock);
    std::atomic<int> ticks{0};
    const uint32_t id = timers.setEvent(5, 5, [&] { ++ticks; });
    ASSERT_NE(id, 0u);
    while (ticks < 3) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(timers.killEvent(id), 1);
    const int atKill = ticks;
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_EQ(ticks, atKill);
    EXPECT_EQ(timers.killEvent(id), 0);
}

// On the virtual clock every tick sees the simulated devices exactly one
// period after the last, however fast the simulation runs.
TEST(PeriodicTimer, VirtualTicksFallOnWholePeriodsOfTheSimulation) {
    VirtualAudio audio({.speed = 100});
    std::mutex mutex;
    std::vector<uint64_t> frames;
    std::atomic<uint32_t> id{0};
    id = audio.timers().setEvent(200, 200, [&] {
        std::lock_guard lock(mutex);
        frames.push_back(audio.frameNow());
        if (frames.size() == 10) {
            audio.timers().killEvent(id);  // from its own tick
        }
    });
    ASSERT_NE(id.load(), 0u);
    for (int wait = 0; wait < 2000; ++wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        std::lock_guard lock(mutex);
        if (frames.size() >= 10) {
            break;
        }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    std::lock_guard lock(mutex);
    ASSERT_EQ(frames.size(), 10u);
    for (std::size_t i = 1; i < frames.size(); ++i) {
        EXPECT_EQ(frames[i] - frames[i - 1], 8820u) << "tick " << i;
    }
}

}  // namespace
}  // namespace tunebox
