#include "effects/centre_removal.h"

#include "effects/sample_clip.h"

namespace tunebox {
namespace {

constexpr double kOutputScale = 0.9335210577864839;

}  // namespace

int32_t centreRemovalSide(int32_t left, int32_t right) {
    return (left * 128 + right * -128) / 192;
}

int16_t centreRemovalOutput(int32_t side) {
    return static_cast<int16_t>(static_cast<int32_t>(side * kOutputScale));
}

void fltCentreRemoval(EffectControl& ctl, int16_t* block, uint32_t length) {
    const auto frames = static_cast<int32_t>(fltFramesInBlock(ctl, length));
    float* historyLeft = ctl.pCurReverbLeft.get();
    float* historyRight = ctl.pCurReverbRight.get();
    float* left = ctl.pLeft.get();
    float* right = ctl.pRight.get();
    for (int32_t i = 0; i < frames; ++i) {
        const int32_t inLeft = block[2 * i];
        const int32_t inRight = block[2 * i + 1];
        historyLeft[i] = static_cast<float>(inLeft);
        historyRight[i] = static_cast<float>(inRight);
        // Early frames reach back into the end of the previous block, still
        // held in the history; a block shorter than the delay has nothing to
        // reach back to and reads silence there.
        int32_t delayed = i - kCentreRemovalDelayFrames;
        if (delayed < 0) {
            delayed += frames;
        }
        int32_t delayedLeft = 0;
        int32_t delayedRight = 0;
        if (delayed >= 0) {
            delayedLeft = static_cast<int32_t>(historyLeft[delayed]);
            delayedRight = static_cast<int32_t>(historyRight[delayed]);
        }
        left[i] = centreRemovalOutput(centreRemovalSide(inLeft, inRight));
        right[i] = centreRemovalOutput(centreRemovalSide(delayedLeft, delayedRight));
    }
    storeClippedFrames(block, left, right, static_cast<uint32_t>(frames));
}

}  // namespace tunebox
