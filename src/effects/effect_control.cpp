#include "effects/effect_control.h"

#include <string>

#include "core/diagnostic_log.h"
#include "core/heap.h"

namespace tunebox {
namespace {

struct WorkArray {
    std::unique_ptr<float[]> EffectControl::*field;
    const char* name;
};

constexpr std::array<WorkArray, 6> kWorkArrays{{
    {&EffectControl::pLeft, "pLeft"},
    {&EffectControl::pLeftResult, "pLeftResult"},
    {&EffectControl::pRight, "pRight"},
    {&EffectControl::pRightResult, "pRightResult"},
    {&EffectControl::pCurReverbLeft, "pCurReverbLeft"},
    {&EffectControl::pCurReverbRight, "pCurReverbRight"},
}};

void releaseAll(EffectControl& ctl) {
    for (const WorkArray& array : kWorkArrays) {
        (ctl.*array.field).reset();
    }
    reverb_free(ctl.reverb);
}

bool allocateWorkArrays(EffectControl& ctl) {
    for (const WorkArray& array : kWorkArrays) {
        ctl.*array.field = heapAllocZeroed<float>(ctl.blockSize);
        if (!(ctl.*array.field)) {
            logAlways(std::string("ﾒﾓﾘ確保失敗:fltEqualizerInit:ctl->") + array.name);
            return false;
        }
    }
    return true;
}

}  // namespace

int fltEqualizerInit(EffectControl& ctl, const BandValues& values, int sampleRate) {
    if (ctl.initialised) {
        return 1;
    }
    // A record that cannot run its reverb would crash the chain later, so a
    // delay-line failure is treated like a work-array failure.
    if (!allocateWorkArrays(ctl) || !reverb_init(ctl.reverb)) {
        releaseAll(ctl);
        return 0;
    }
    for (int band = 0; band < kBandCount; ++band) {
        ctl.bands[band] = BandSection{};
        ctl.bands[kBandCount + band] = BandSection{};
        fltEqualizerSetBand(ctl, band, values[band], sampleRate);
    }
    ctl.initialised = 1;
    return 1;
}

void fltEqualizerFree(EffectControl& ctl) {
    if (!ctl.initialised) {
        return;
    }
    releaseAll(ctl);
    ctl.initialised = 0;
}

void fltEqualizerSetBand(EffectControl& ctl, int band, int value, int sampleRate) {
    fltDesignBand(ctl.bands[band], band, value, sampleRate);
    fltDesignBand(ctl.bands[kBandCount + band], band, value, sampleRate);
}

uint32_t fltFramesInBlock(const EffectControl& ctl, uint32_t length) {
    if (!ctl.initialised) {
        return 0;
    }
    const uint32_t usable = length < ctl.blockSize ? length : ctl.blockSize;
    return usable / 4;
}

}  // namespace tunebox
