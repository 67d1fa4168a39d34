#pragma once
// Centre removal: cancels what both channels share (a centred voice) and
// spreads the difference signal over both sides, the right one delayed by
// 2,000 frames through the input history kept in pCurReverbLeft/Right.

#include <cstdint>

#include "effects/effect_control.h"

namespace tunebox {

inline constexpr int32_t kCentreRemovalDelayFrames = 2000;

// Processes `length` bytes of 16-bit stereo in place.
void fltCentreRemoval(EffectControl& ctl, int16_t* block, uint32_t length);

// The difference signal of one frame: (left - right) scaled to 2/3, in
// integer arithmetic.
int32_t centreRemovalSide(int32_t left, int32_t right);

// Scales a side value for output. A result beyond 16 bits wraps around
// instead of clipping; only strongly opposite channels get there.
int16_t centreRemovalOutput(int32_t side);

}  // namespace tunebox
