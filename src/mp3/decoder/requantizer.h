#pragma once
// Requantisation: quantised lines to spectral values, scaled by the global
// gain, subblock gains and scale factors of their band.

#include <array>

#include "mp3/decoder/huffman_decoder.h"
#include "mp3/decoder/layer3_scale_factors.h"
#include "mp3/decoder/layer3_side_info.h"
#include "mp3/decoder/scale_factor_bands.h"

namespace tunebox {

using Spectrum = std::array<float, kGranuleLines>;

struct RequantizeInput {
    const QuantizedSpectrum& lines;
    int nonZeroEnd;  // lines from here on are zero
    const GranuleChannelInfo& info;
    const ScaleFactors& factors;
    const ScaleFactorBands& bands;
    bool mpeg1;
};

void requantize(const RequantizeInput& input, Spectrum& spectrum);

// Number of long scale-factor bands at the bottom of a mixed block.
inline int mixedLongBands(bool mpeg1) {
    return mpeg1 ? 8 : 6;
}

}  // namespace tunebox
