#include "platform/tick_spacing.h"

namespace tunebox {

int64_t TickSpacing::next() {
    constexpr double kGoldenFraction = 0.6180339887498949;
    phase_ += kGoldenFraction;
    phase_ -= static_cast<int>(phase_);
    return kShortestUsec + static_cast<int64_t>(phase_ * double(kSpreadUsec));
}

}  // namespace tunebox
