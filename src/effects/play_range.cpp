#include "effects/play_range.h"

namespace tunebox {
namespace {

bool strictlyBetween(uint32_t position, uint32_t low, uint32_t high) {
    return position > low && position < high;
}

float ramp(uint32_t position, uint32_t from, uint32_t to) {
    return static_cast<float>(position - from) / static_cast<float>(to - from);
}

}  // namespace

EnvelopeGain envelopeGain(const PlayRange& range, uint32_t position) {
    if (position < range[kFadeInStart] || position > range[kFadeOutEnd] ||
        position < range[kRangeStart] || position > range[kRangeEnd]) {
        return {0.0f, false};
    }
    if (strictlyBetween(position, range[kFadeInEnd], range[kFadeOutStart])) {
        return {1.0f, true};
    }
    if (strictlyBetween(position, range[kFadeInStart], range[kFadeInEnd])) {
        return {ramp(position, range[kFadeInStart], range[kFadeInEnd]), false};
    }
    if (strictlyBetween(position, range[kFadeOutStart], range[kFadeOutEnd])) {
        return {1.0f - ramp(position, range[kFadeOutStart], range[kFadeOutEnd]), false};
    }
    return {0.0f, false};
}

}  // namespace tunebox
