#include "effects/sample_clip.h"

#include <cmath>

namespace tunebox {

float storeClippedFrames(int16_t* block, const float* left, const float* right, uint32_t frames) {
    float peak = 0.0f;
    for (uint32_t i = 0; i < frames; ++i) {
        const float magnitudeLeft = std::fabs(left[i]);
        const float magnitudeRight = std::fabs(right[i]);
        peak = magnitudeLeft > peak ? magnitudeLeft : peak;
        peak = magnitudeRight > peak ? magnitudeRight : peak;
        block[2 * i] = clipToSample(left[i]);
        block[2 * i + 1] = clipToSample(right[i]);
    }
    return peak;
}

}  // namespace tunebox
