#pragma once
// The arithmetic behind the position trackbars and the time text. Positions
// are native-PCM bytes; trackbar values are ten-thousandths of a file.

#include <cstdint>
#include <string>

namespace tunebox {

inline constexpr int kTrackbarMax = 10000;
inline constexpr int kTrackbarPage = 100;

// "mm:ss:hh" in minutes, seconds and hundredths. Each field is kept in one
// byte, so minutes wrap after 255 as they always have on this display.
std::string formatPositionTime(uint32_t bytes);

// round(value / 10000 x length): where a trackbar value points in a file.
uint32_t trackbarToBytes(int value, uint32_t length);

}  // namespace tunebox
