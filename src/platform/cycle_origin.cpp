#include "platform/cycle_origin.h"

#include <algorithm>

namespace tunebox {
namespace {

// About a third of a second of reports, one every 3.5 ms on average.
constexpr std::size_t kReportsKept = 100;
// The first reports of a starting stream can be a cycle or more off; they
// only stand in until the next ones come.
constexpr int kSettlingReports = 3;

void keep(std::deque<int64_t>& bounds, int64_t bound) {
    bounds.push_back(bound);
    if (bounds.size() > kReportsKept) {
        bounds.pop_front();
    }
}

}  // namespace

void CycleOrigin::add(int64_t stamp, int64_t position) {
    if (upper_.empty()) {
        reportsSeen_ = 0;
    }
    if (reportsSeen_++ <= kSettlingReports) {
        upper_.clear();
        lower_.clear();
    } else if (position > lastPosition_) {
        keep(lower_, lastStamp_ - position);
    }
    keep(upper_, stamp - position);
    lastStamp_ = stamp;
    lastPosition_ = position;
}

void CycleOrigin::clear() {
    upper_.clear();
    lower_.clear();
}

int64_t CycleOrigin::origin() const {
    const int64_t upper = *std::min_element(upper_.begin(), upper_.end());
    if (lower_.empty()) {
        return upper;
    }
    const int64_t lower = *std::max_element(lower_.begin(), lower_.end());
    return lower <= upper ? lower + (upper - lower) / 2 : upper;
}

}  // namespace tunebox
