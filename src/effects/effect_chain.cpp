#include "effects/effect_chain.h"

#include "effects/centre_removal.h"
#include "effects/equalizer_stage.h"

namespace tunebox {

float fltEffectChain(EffectControl& ctl, int16_t* block, uint32_t length) {
    if (!ctl.initialised) {
        return 0.0f;
    }
    ctl.currentBlock = block;
    const uint32_t usable = fltFramesInBlock(ctl, length) * 4;
    const float equaliserPeak = fltEqualizerStage(ctl, block, usable);
    if (ctl.centreRemovalFlag == 1) {
        fltCentreRemoval(ctl, block, usable);
    }
    float reverbPeak = 0.0f;
    if (ctl.reverbFlag == 1) {
        reverbPeak = reverb_process(ctl.reverb, block, usable, ctl.pLeft.get(), ctl.pRight.get());
    }
    return reverbPeak > equaliserPeak ? reverbPeak : equaliserPeak;
}

}  // namespace tunebox
