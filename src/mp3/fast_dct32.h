#pragma once
// A 32-point DCT-II, X[m] = sum over k of x[k] cos((2k + 1) m pi / 64), by
// recursive even/odd splitting (Lee's algorithm): about 80 multiplications
// in place of 1024.

namespace tunebox {

// Transforms `values` (32 entries) in place.
void dct32(float* values);

}  // namespace tunebox
