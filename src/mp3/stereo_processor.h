#pragma once
// Joint stereo: mid/side and intensity stereo (MPEG-1 and MPEG-2 rules),
// applied to both channels' requantised spectra before reordering.

#include "mp3/layer3_scale_factors.h"
#include "mp3/layer3_side_info.h"
#include "mp3/mpeg_frame_header.h"
#include "mp3/requantizer.h"
#include "mp3/scale_factor_bands.h"

namespace tunebox {

struct StereoInput {
    const MpegFrameHeader& header;
    const GranuleChannelInfo& rightInfo;
    const ScaleFactors& rightFactors;
    const ScaleFactorBands& bands;
};

void processJointStereo(const StereoInput& input, Spectrum& left, Spectrum& right);

}  // namespace tunebox
