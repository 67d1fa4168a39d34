#pragma once
// Scale-factor band boundaries (in spectral lines) for the nine sample rates.

#include <array>

namespace tunebox {

inline constexpr int kLongBands = 22;
inline constexpr int kShortBands = 13;

struct ScaleFactorBands {
    std::array<int, kLongBands + 1> longBounds;    // lines of one granule
    std::array<int, kShortBands + 1> shortBounds;  // lines of one short window
};

// rateTableIndex as MpegHeader::rateTableIndex (0..8).
const ScaleFactorBands& scaleFactorBands(int rateTableIndex);

}  // namespace tunebox
