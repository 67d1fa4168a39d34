#pragma once
// The decoder's vector kernels, one set per vector path (see simd_path.h),
// each set built from the same lane-wise code.

#include <array>
#include <cstddef>
#include <cstdint>

#include "mp3/decoder/simd_path.h"

namespace tunebox {

// The rows of a stage whose lanes run side by side (subbands or slots).
inline constexpr int kKernelLanes = 32;
using KernelLanes = std::array<float, kKernelLanes>;

// Where the synthesis window reads and writes. Row j of `low` and `high`
// holds V[j] and V[32 + j] of consecutive slots, `rowStride` floats
// apart; `low` points at the granule's first slot, `high` one slot
// earlier. Weights [tap][j], 8 taps of 32.
struct SynthesisWindowJob {
    const float* low;
    const float* high;
    std::size_t rowStride;
    const float* lowWeights;
    const float* highWeights;
    int16_t* out;  // slot s, index j at out[(32 s + j) * stride]
    int stride;
};

struct SimdKernels {
    // The 32 x 18 output samples of a granule, rounded half away from
    // zero and clipped to +-32767.
    void (*synthesisWindow)(const SynthesisWindowJob& job);
    // out[r][lane] = sum over c of matrix[r][c] in[c][lane], the sum
    // running up from c = 0, for the lanes below `width` (a multiple of
    // 8); an 18 x 18 and a 6 x 6 matrix.
    void (*multiply18)(const float* matrix, const KernelLanes* in, KernelLanes* out, int width);
    void (*multiply6)(const float* matrix, const KernelLanes* in, KernelLanes* out, int width);
    // A granule's [18 slots][32 subbands] to [32 subbands][20 lanes], the
    // two lanes past the slots zero: the layout of the synthesis.
    void (*slotsToLanes)(const float* slots, float* lanes);
};

const SimdKernels& simdKernels(SimdPath path);

// The kernels of the active path.
inline const SimdKernels& simdKernels() {
    return simdKernels(activeSimdPath());
}

}  // namespace tunebox
