#pragma once
// One slot of the player's ring: a heap block of the buffer size, the device
// header that carries it, and whether it is the last block of the run.

#include <cstdint>
#include <memory>

#include "core/wave_header.h"

namespace tunebox {

inline constexpr int32_t kMaxWaveBufs = 30;

struct WaveBuf {
    uint32_t lastFlag = 0;
    WaveHeader pwh;  // pwh.data points into `block`
    std::unique_ptr<uint8_t[]> block;
};

}  // namespace tunebox
