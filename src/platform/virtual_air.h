#pragma once
// The simulated room's units: the frame rate and size every simulated device
// runs at, and one stereo frame of what is in the air.

#include <cstdint>

#include "core/wave_format.h"
#include "platform/clock.h"

namespace tunebox {

inline constexpr uint32_t kVirtualFramesPerSecond = kNativeSampleRate;
inline constexpr uint32_t kVirtualFrameBytes = kNativeFrameBytes;

struct AirFrame {
    int16_t left = 0;
    int16_t right = 0;
    uint32_t realBytes = 0;  // 0 for the silence the device plays when starved
};

inline int16_t sampleAt(const uint8_t* bytes) {
    return static_cast<int16_t>(static_cast<uint16_t>(bytes[0] | (bytes[1] << 8)));
}

inline Clock::Duration timeOfFrame(uint64_t frame) {
    return Clock::Duration(
        static_cast<int64_t>(frame * 1'000'000'000ull / kVirtualFramesPerSecond));
}

}  // namespace tunebox
