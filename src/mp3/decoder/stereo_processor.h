#pragma once
// Joint stereo: mid/side and intensity stereo (MPEG-1 and MPEG-2 rules),
// applied to both channels' requantised spectra before reordering.

#include "mp3/decoder/layer3_scale_factors.h"
#include "mp3/decoder/layer3_side_info.h"
#include "mp3/decoder/mpeg_header.h"
#include "mp3/decoder/requantizer.h"
#include "mp3/decoder/scale_factor_bands.h"

namespace tunebox {

struct StereoInput {
    const MpegHeader& header;
    const GranuleChannelInfo& rightInfo;
    const ScaleFactors& rightFactors;
    const ScaleFactorBands& bands;
    // Lines from here up are zero in both channels.
    int nonZeroEnd = kGranuleLines;
};

void processJointStereo(const StereoInput& input, Spectrum& left, Spectrum& right);

}  // namespace tunebox
