#include "platform/cycle_origin.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace tunebox {
namespace {

constexpr int64_t kOrigin = 1'000'000;

// A server that moves data once per cycle and answers at any point of it:
// the position it gives is that of the last cycle.
struct CycledServer {
    int64_t cycle;
    int64_t reportAt(int64_t now) const { return (now - kOrigin) / cycle * cycle; }
};

// Reports every `period` µs, answered up to a millisecond late.
void feed(CycleOrigin& origin, const CycledServer& server, int64_t from, int count,
          int64_t period) {
    std::srand(7);
    for (int k = 0; k < count; ++k) {
        const int64_t now = from + k * period + std::rand() % 1000;
        origin.add(now, server.reportAt(now));
    }
}

TEST(CycleOrigin, ReportsAnsweredAnywhereInTheCycleCloseInOnTheOrigin) {
    // Cycles of 256 frames at 48 kHz and of 1,024 at 44.1 kHz; reports every
    // 5 ms beat slowly against the first.
    for (const int64_t cycle : {5333, 23220}) {
        SCOPED_TRACE(cycle);
        CycleOrigin origin;
        feed(origin, {cycle}, kOrigin + 50'000, 100, 5000);
        EXPECT_NEAR(origin.origin(), kOrigin, 500);
    }
}

TEST(CycleOrigin, TheFirstReportsOfAStartingStreamDoNotStayInTheEstimate) {
    CycleOrigin origin;
    // Three reports a cycle and more ahead, as a starting stream's can be.
    for (int k = 0; k < 3; ++k) {
        origin.add(kOrigin + 10'000 + k * 5000, 10'000 + k * 5000 + 12'000);
    }
    feed(origin, {5333}, kOrigin + 25'000, 40, 5000);
    EXPECT_NEAR(origin.origin(), kOrigin, 500);

    origin.clear();
    EXPECT_TRUE(origin.empty());
}

}  // namespace
}  // namespace tunebox
