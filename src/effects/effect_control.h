#pragma once
// The effect control record: everything one engine's effect chain keeps from
// block to block. Each engine owns one, so the chain needs no locking.

#include <array>
#include <cstdint>
#include <memory>

#include "effects/band_section.h"
#include "effects/play_range.h"
#include "effects/reverb.h"
#include "effects/ten_band_filter.h"

namespace tunebox {

using BandValues = std::array<int, kBandCount>;

struct EffectControl {
    int32_t initialised = 0;
    BandSections bands{};
    int32_t level = 0;  // percent
    int32_t centreRemovalFlag = 0;
    int32_t reverbFlag = 0;
    int32_t equaliserFlag = 0;
    int32_t levelFlag = 0;
    uint32_t blockSize = 0;  // bytes; the largest block the chain accepts
    // Work arrays of blockSize floats each.
    std::unique_ptr<float[]> pLeft;
    std::unique_ptr<float[]> pLeftResult;
    std::unique_ptr<float[]> pRight;
    std::unique_ptr<float[]> pRightResult;
    std::unique_ptr<float[]> pCurReverbLeft;  // centre-removal input history
    std::unique_ptr<float[]> pCurReverbRight;
    int16_t* currentBlock = nullptr;
    Reverb reverb;
    PlayRange playRange{};
};

// Allocates the work arrays for `ctl.blockSize`, sets up the reverb and
// designs every band from `values`. An initialised record is left as it is
// (returns 1). On an allocation failure it logs, frees what it took, leaves
// the record uninitialised and returns 0.
int fltEqualizerInit(EffectControl& ctl, const BandValues& values, int sampleRate);

// Releases the arrays and delay lines and marks the record uninitialised.
void fltEqualizerFree(EffectControl& ctl);

// Retunes both channels of one band; the running filter state is kept.
void fltEqualizerSetBand(EffectControl& ctl, int band, int value, int sampleRate);

// Frames of a block of `length` bytes that the chain processes: never more
// than the work arrays hold, and none before initialisation.
uint32_t fltFramesInBlock(const EffectControl& ctl, uint32_t length);

}  // namespace tunebox
