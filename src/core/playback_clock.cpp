#include "core/playback_clock.h"

#include <algorithm>

#include "core/wave_format.h"

namespace tunebox {

ClockTime clockTime(uint32_t runStart, uint32_t deviceBytes, uint32_t bytesPerSecond,
                    uint32_t baseSeconds) {
    if (bytesPerSecond == 0) {
        return {};
    }
    // The sum wraps at 32 bits like every byte position of the engine.
    const uint32_t total = runStart + deviceBytes;
    const auto allSeconds =
        static_cast<uint32_t>(double(total) / bytesPerSecond + 0.5 + double(baseSeconds));
    const auto frames = static_cast<uint32_t>(uint64_t{total % bytesPerSecond} * kSectorsPerSecond /
                                              bytesPerSecond);
    return {allSeconds / 60, allSeconds % 60, frames};
}

uint32_t sliderPosition(uint32_t runStart, uint32_t deviceBytes, uint32_t bytesPerSecond,
                        uint32_t baseSeconds, uint32_t length) {
    if (bytesPerSecond == 0 || length == 0) {
        return 0;
    }
    const auto seconds = static_cast<uint32_t>(double(baseSeconds) + deviceBytes / bytesPerSecond +
                                               double(runStart) / bytesPerSecond + 0.5);
    // A short source played for long would not fit: converting such a double
    // to 32 bits is undefined, so it stops at the largest count.
    const double slider = double(bytesPerSecond) * seconds / (double(length) / kSliderRange);
    return static_cast<uint32_t>(std::min(slider, double(UINT32_MAX)));
}

uint32_t sliderToPosition(uint32_t slider, uint32_t length) {
    const auto position =
        static_cast<uint32_t>(double(length) * (double(slider) / kSliderRange) + 0.5);
    return adjustStartPosition(position);
}

}  // namespace tunebox
