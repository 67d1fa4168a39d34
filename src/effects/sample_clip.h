#pragma once
// How every effect stage turns a float back into a 16-bit sample: values at
// or beyond full scale stick to +/-32767 (never -32768, so the two halves of
// the range stay symmetric), everything else is truncated toward zero.

#include <cstdint>

namespace tunebox {

inline int16_t clipToSample(float value) {
    // Clamping to +/-32767 before truncating gives the same result for every
    // value and lets the compiler use min/max instructions; a NaN lands on
    // the lower bound instead of an undefined conversion.
    const float low = value > -32767.0f ? value : -32767.0f;
    const float clamped = low < 32767.0f ? low : 32767.0f;
    return static_cast<int16_t>(clamped);
}

// Interleaves the two float channels back into the block with clipping and
// returns the largest magnitude seen before clipping.
float storeClippedFrames(int16_t* block, const float* left, const float* right, uint32_t frames);

}  // namespace tunebox
