#pragma once
// Runs a stereo pair of channels through the ten peaking bands in series,
// band 0 first, each band in direct form I with its own carried state.

#include <array>
#include <cstdint>

#include "effects/band_section.h"

namespace tunebox {

// Ten left sections, then ten right sections.
using BandSections = std::array<BandSection, 2 * kBandCount>;

// Filters `frames` samples of each channel in place.
void filterTenBands(BandSections& sections, float* left, float* right, uint32_t frames);

}  // namespace tunebox
