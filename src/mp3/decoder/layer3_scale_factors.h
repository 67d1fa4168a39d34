#pragma once
// Layer III scale factors: MPEG-1 (with scale-factor selection sharing
// between granules) and the MPEG-2/2.5 partitioned coding, including the
// variant used for the intensity-coded right channel.

#include <array>
#include <cstdint>

#include "mp3/decoder/bit_reader.h"
#include "mp3/decoder/layer3_side_info.h"
#include "mp3/decoder/scale_factor_bands.h"

namespace tunebox {

struct ScaleFactors {
    std::array<uint8_t, kLongBands> longBands{};
    std::array<std::array<uint8_t, 3>, kShortBands> shortBands{};  // [band][window]
    // Largest value a band's factor can take; in an intensity-coded channel
    // that value marks the band as not intensity coded (MPEG-2 rule).
    std::array<uint8_t, kLongBands> longLimit{};
    std::array<uint8_t, kShortBands> shortLimit{};
};

// MPEG-1. In granule 1 the groups flagged in scfsi keep granule 0's values,
// so `factors` must still hold them.
void readScaleFactorsMpeg1(BitReader& reader, const GranuleChannelInfo& info,
                           const std::array<bool, 4>& scfsi, int granule, ScaleFactors& factors);

// MPEG-2 and 2.5. `intensityChannel` is set for the right channel of an
// intensity-stereo frame.
void readScaleFactorsMpeg2(BitReader& reader, const GranuleChannelInfo& info, bool intensityChannel,
                           ScaleFactors& factors);

}  // namespace tunebox
