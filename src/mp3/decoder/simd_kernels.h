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

// Where the synthesis window reads and writes, for `outputs` samples a
// slot (32, or 16 or 8 for the narrow synthesis). Row j of `low` and
// `high` holds V[j] and V[outputs + j] of consecutive slots, `rowStride`
// floats apart; `low` points at the granule's first slot, `high` one slot
// earlier. Weights [tap][j], 8 taps of `outputs`.
struct SynthesisWindowJob {
    const float* low;
    const float* high;
    std::size_t rowStride;
    const float* lowWeights;
    const float* highWeights;
    int16_t* out;  // slot s, index j at out[(outputs s + j) * stride]
    int stride;
    int outputs;
};

struct SimdKernels {
    // The outputs x 18 samples of a granule, rounded half away from zero.
    // The full synthesis clips to +-32767 and adds each tap's two
    // products before the sum; the narrow one clips to the 16-bit range
    // and adds them one at a time.
    void (*synthesisWindow)(const SynthesisWindowJob& job);
    void (*narrowSynthesisWindow)(const SynthesisWindowJob& job);
    // out[r][lane] = sum over c of matrix[r][c] in[c][lane], the sum
    // running up from c = 0, for the lanes below `width` (a multiple of
    // 8); an 18 x 18 and a 6 x 6 matrix.
    void (*multiply18)(const float* matrix, const KernelLanes* in, KernelLanes* out, int width);
    void (*multiply6)(const float* matrix, const KernelLanes* in, KernelLanes* out, int width);
    // A granule's [18 slots][32 subbands] to [subbands][20 lanes] for the
    // lowest `subbands` (32, 16 or 8), the two lanes past the slots zero:
    // the layout of the synthesis.
    void (*slotsToLanes)(const float* slots, float* lanes, int subbands);
    // The fast DCT of `points` (32, 16 or 8) rows of 20 slot lanes in
    // place, with that size's table of inverse cosines and those of the
    // halves below it (see fast_dct32.cpp).
    void (*dct)(float* rows, int points, const float* inverseCosines);
};

const SimdKernels& simdKernels(SimdPath path);

// The kernels of the active path.
inline const SimdKernels& simdKernels() {
    return simdKernels(activeSimdPath());
}

// A window kernel over a run of `slots` (fewer than a granule's 18 for a
// Layer I frame). The kernels write whole granules, so a shorter run goes
// through a granule of its own and only its slots are copied out.
inline void windowRun(void (*kernel)(const SynthesisWindowJob&), SynthesisWindowJob job,
                      int slots) {
    constexpr int kGranuleSlots = 18;
    if (slots == kGranuleSlots) {
        kernel(job);
        return;
    }
    std::array<int16_t, kGranuleSlots * kKernelLanes> granule;
    int16_t* const out = job.out;
    const int stride = job.stride;
    job.out = granule.data();
    job.stride = 1;
    kernel(job);
    for (int i = 0; i < slots * job.outputs; ++i) {
        out[i * stride] = granule[static_cast<std::size_t>(i)];
    }
}

}  // namespace tunebox
