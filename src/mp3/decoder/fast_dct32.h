#pragma once
// A 32-point DCT-II, X[m] = sum over k of x[k] cos((2k + 1) m pi / 64), by
// recursive even/odd splitting (Lee's algorithm): about 80 multiplications
// in place of 1024. It transforms a whole granule's time slots at once, one
// slot per vector lane.

#include <array>

namespace tunebox {

// 18 time slots, padded to a whole number of vector lanes.
inline constexpr int kDctLanes = 20;
using DctLanes = std::array<float, kDctLanes>;

// Transforms each lane of `values` (32 rows) in place.
void dct32(std::array<DctLanes, 32>& values);

// The same transform at 16 or 8 points (`points`), for the synthesis of
// fewer subbands: each lane of rows[0..points) in place.
void dctNarrow(DctLanes* rows, int points);

}  // namespace tunebox
