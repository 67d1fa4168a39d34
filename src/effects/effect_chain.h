#pragma once
// The effect chain run over every block an engine plays or records:
// equaliser stage, then optional centre removal, then optional reverb.

#include <cstdint>

#include "effects/effect_control.h"

namespace tunebox {

// Processes `length` bytes of 16-bit stereo in place and returns the larger
// of the equaliser's and the reverb's peak. An uninitialised record leaves
// the block alone and returns 0.
float fltEffectChain(EffectControl& ctl, int16_t* block, uint32_t length);

}  // namespace tunebox
