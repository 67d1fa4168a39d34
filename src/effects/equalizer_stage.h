#pragma once
// The first stage of the effect chain: level, ten-band equaliser, play-range
// envelope, peak measurement and clipping back into 16 bits.

#include <cstdint>

#include "effects/effect_control.h"

namespace tunebox {

// Processes `length` bytes of 16-bit stereo in place and returns the peak
// magnitude before clipping. The float result stays in pLeft/pRight.
float fltEqualizerStage(EffectControl& ctl, int16_t* block, uint32_t length);

}  // namespace tunebox
