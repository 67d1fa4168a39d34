#include "effects/equalizer_stage.h"

#include "effects/sample_clip.h"

namespace tunebox {
namespace {

void splitChannels(const int16_t* block, uint32_t frames, float* left, float* right) {
    for (uint32_t i = 0; i < frames; ++i) {
        left[i] = block[2 * i];
        right[i] = block[2 * i + 1];
    }
}

void scale(float* samples, uint32_t count, float factor) {
    for (uint32_t i = 0; i < count; ++i) {
        samples[i] *= factor;
    }
}

void applyEnvelope(const PlayRange& range, uint32_t frames, float* left, float* right) {
    for (uint32_t i = 0; i < frames; ++i) {
        const EnvelopeGain envelope = envelopeGain(range, range[kBlockPosition] + 4 * i);
        if (!envelope.flat) {
            left[i] *= envelope.gain;
            right[i] *= envelope.gain;
        }
    }
}

}  // namespace

float fltEqualizerStage(EffectControl& ctl, int16_t* block, uint32_t length) {
    const uint32_t frames = fltFramesInBlock(ctl, length);
    float* left = ctl.pLeft.get();
    float* right = ctl.pRight.get();
    splitChannels(block, frames, left, right);
    if (ctl.levelFlag == 1) {
        const float factor = static_cast<float>(ctl.level) / 100.0f;
        scale(left, frames, factor);
        scale(right, frames, factor);
    }
    // The bands run in place in one pass, so pLeftResult and pRightResult
    // are not needed as ping-pong buffers here.
    if (ctl.equaliserFlag == 1) {
        filterTenBands(ctl.bands, left, right, frames);
    }
    if (ctl.playRange[kEnvelopeEnable] == 1) {
        applyEnvelope(ctl.playRange, frames, left, right);
    }
    return storeClippedFrames(block, left, right, frames);
}

}  // namespace tunebox
