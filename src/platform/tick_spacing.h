#pragma once
// How far apart a stream's timing reports are asked for. A server that moves
// data once per graph cycle answers with the position of the last cycle, so a
// report tells where the cycle stood only as closely as it follows one. Asked
// for at a fixed period, the reports can fall into step with the cycles (a
// 5 ms tick plus its wake-up against the 5.3 ms of 256 frames at 48 kHz) and
// then come late by the same amount for seconds. Spacing them by the golden
// ratio within a range lets every run of a few dozen reports fall all over
// any cycle.

#include <cstdint>

namespace tunebox {

class TickSpacing {
  public:
    static constexpr int64_t kShortestUsec = 2000;
    static constexpr int64_t kSpreadUsec = 3000;

    // Microseconds from this tick to the next.
    int64_t next();

  private:
    double phase_ = 0;  // of the spread, 0..1
};

}  // namespace tunebox
