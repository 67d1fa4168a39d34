#pragma once
// A buffer queued on an audio device: the caller owns the data; the device
// fills in bytesRecorded (input) and sets kWaveHeaderDone when it hands the
// buffer back.

#include <cstdint>

namespace tunebox {

inline constexpr uint32_t kWaveHeaderDone = 0x01;
inline constexpr uint32_t kWaveHeaderPrepared = 0x02;
inline constexpr uint32_t kWaveHeaderInQueue = 0x10;

struct WaveHeader {
    uint8_t* data = nullptr;
    uint32_t bufferLength = 0;
    uint32_t bytesRecorded = 0;
    uint32_t flags = 0;
    void* user = nullptr;  // the owner's context, untouched by the device
};

}  // namespace tunebox
