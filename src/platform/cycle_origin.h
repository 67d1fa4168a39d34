#pragma once
// Where a stream's clock stood at 0, from timing reports of a server that
// moves data once per cycle (PipeWire) and answers with the position of the
// last cycle and the time of the answer. A report is never early: the cycle
// it shows happened at or before its time. When the position has stepped
// since the report before, the cycle also happened after that earlier
// report. Over many reports the two bounds close in on the cycle's time,
// and so on the origin.

#include <cstdint>
#include <deque>

namespace tunebox {

class CycleOrigin {
  public:
    // A report: the time it was answered and the position it gives, both in
    // microseconds.
    void add(int64_t stamp, int64_t position);
    void clear();
    bool empty() const { return upper_.empty(); }
    // Midway between the bounds; the upper bound alone while they disagree,
    // as after a change of cycle. Only with at least one report.
    int64_t origin() const;

  private:
    std::deque<int64_t> upper_;
    std::deque<int64_t> lower_;
    int64_t lastStamp_ = 0;
    int64_t lastPosition_ = 0;
    int reportsSeen_ = 0;
};

}  // namespace tunebox
