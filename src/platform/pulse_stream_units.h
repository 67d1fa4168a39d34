#pragma once
// The one format every PulseAudio stream runs in (44,100 Hz, 16-bit stereo)
// and the conversions between its bytes and the server's microseconds.

#include <pulse/sample.h>

#include <cstdint>

#include "core/wave_format.h"

namespace tunebox {

inline constexpr uint32_t kPulseRate = kNativeSampleRate;
inline constexpr uint32_t kPulseFrameBytes = kNativeFrameBytes;

inline uint64_t bytesOfTime(pa_usec_t usec) {
    return (usec * kPulseRate + PA_USEC_PER_SEC / 2) / PA_USEC_PER_SEC * kPulseFrameBytes;
}

inline uint32_t wholeFrames(uint32_t bytes) {
    return bytes - bytes % kPulseFrameBytes;
}

}  // namespace tunebox
