#pragma once
// The player's clock arithmetic: where a run started plus what the device has
// played, as minutes, seconds and 1/75-second frames, and as a slider value
// in ten-thousandths of the length. Both the time display and the position
// slider of the dialog read these values, so their rounding is kept exactly.

#include <cstdint>

namespace tunebox {

inline constexpr uint32_t kSliderRange = 10000;

struct ClockTime {
    uint32_t minutes = 0;
    uint32_t seconds = 0;
    uint32_t frames = 0;  // 1/75 second
};

// The seconds are rounded to the nearest whole second while the frames come
// from the truncated remainder, so 61.5 s reads 01:02:37.
ClockTime clockTime(uint32_t runStart, uint32_t deviceBytes, uint32_t bytesPerSecond,
                    uint32_t baseSeconds);

// Whole seconds played (device seconds truncated, run start not), rounded,
// as ten-thousandths of `length`. 0 for an empty length.
uint32_t sliderPosition(uint32_t runStart, uint32_t deviceBytes, uint32_t bytesPerSecond,
                        uint32_t baseSeconds, uint32_t length);

// A byte position that does not fall on a 4-byte frame is moved on by its own
// low bits (1 -> 2, 2 -> 4, 3 -> 6), not rounded to the next frame.
constexpr uint32_t adjustStartPosition(uint32_t position) {
    return position + (position & 3);
}

// Ten-thousandths of `length` as a byte position, rounded, then adjusted.
uint32_t sliderToPosition(uint32_t slider, uint32_t length);

}  // namespace tunebox
