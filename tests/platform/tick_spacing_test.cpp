#include "platform/tick_spacing.h"

#include <gtest/gtest.h>

#include <functional>

#include "platform/cycle_origin.h"

namespace tunebox {
namespace {

constexpr int64_t kOrigin = 1'000'000;

// A server that moves data once per cycle and answers each report at once
// with the position of the last cycle. The origin the reports give is only
// as close as their times fall after a cycle, so it shows whether the ticks
// spread over the cycle.
int64_t originFromTicks(const std::function<int64_t()>& nextTick, int64_t cycle, int64_t wakeUp) {
    CycleOrigin origin;
    int64_t now = kOrigin + 50'000;
    for (int k = 0; k < 100; ++k) {
        now += nextTick() + wakeUp;
        origin.add(now, (now - kOrigin) / cycle * cycle);
    }
    return origin.origin();
}

TEST(TickSpacing, ReportsCloseInOnTheOriginOfAnyCycleWhateverTheWakeUpTakes) {
    // 128 and 256 frames at 44.1 and 48 kHz, and 1,024 at 44.1 kHz. A fixed
    // 5 ms tick that takes a third of a millisecond to wake falls into step
    // with the 5.3 ms cycle and stays a whole cycle off.
    for (const int64_t cycle : {2667, 2902, 5333, 5805, 23220}) {
        for (int64_t wakeUp = 0; wakeUp <= 500; wakeUp += 25) {
            SCOPED_TRACE(testing::Message() << "cycle " << cycle << " µs, wake-up " << wakeUp);
            TickSpacing spacing;
            EXPECT_NEAR(originFromTicks([&] { return spacing.next(); }, cycle, wakeUp), kOrigin,
                        400);
        }
    }
}

TEST(TickSpacing, TicksStayWithinTheirRange) {
    TickSpacing spacing;
    for (int k = 0; k < 1000; ++k) {
        const int64_t gap = spacing.next();
        ASSERT_GE(gap, TickSpacing::kShortestUsec);
        ASSERT_LT(gap, TickSpacing::kShortestUsec + TickSpacing::kSpreadUsec);
    }
}

}  // namespace
}  // namespace tunebox
