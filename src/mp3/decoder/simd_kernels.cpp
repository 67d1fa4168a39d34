#include "mp3/decoder/simd_kernels.h"

#include "mp3/decoder/simd_lane_kernels.h"

namespace tunebox {
namespace {

// The wide paths' entry points carry their instruction set as an attribute
// rather than a compiler option for the file: the inline functions they
// use then stay plain for the rest of the program. Fused multiply-add is
// left out on purpose, as it would round differently from the scalar path.
#if defined(__x86_64__) || defined(__i386__)
#define TUNEBOX_AVX2_TARGET __attribute__((target("avx2")))
#else
#define TUNEBOX_AVX2_TARGET
#endif

template <int Width>
constexpr SimdKernels kernelsOfWidth() {
    return {
        [](const SynthesisWindowJob& job) {
            lanes::synthesisWindow<Width, lanes::kFullWindow>(job);
        },
        [](const SynthesisWindowJob& job) {
            lanes::synthesisWindow<Width, lanes::kNarrowWindow>(job);
        },
        [](const float* m, const KernelLanes* in, KernelLanes* out, int width) {
            lanes::multiply<Width, 18>(m, in, out, width);
        },
        [](const float* m, const KernelLanes* in, KernelLanes* out, int width) {
            lanes::multiply<Width, 6>(m, in, out, width);
        },
        [](const float* slots, float* out, int subbands) {
            lanes::slotsToLanes<Width>(slots, out, subbands);
        },
        [](float* rows, int points, const float* inverseCosines) {
            lanes::dctOfSize<Width>(rows, points, inverseCosines);
        },
    };
}

TUNEBOX_AVX2_TARGET void synthesisWindowAvx2(const SynthesisWindowJob& job) {
    lanes::synthesisWindow<8, lanes::kFullWindow>(job);
}

TUNEBOX_AVX2_TARGET void narrowSynthesisWindowAvx2(const SynthesisWindowJob& job) {
    lanes::synthesisWindow<8, lanes::kNarrowWindow>(job);
}

TUNEBOX_AVX2_TARGET void multiply18Avx2(const float* m, const KernelLanes* in, KernelLanes* out,
                                        int width) {
    lanes::multiply<8, 18>(m, in, out, width);
}

TUNEBOX_AVX2_TARGET void multiply6Avx2(const float* m, const KernelLanes* in, KernelLanes* out,
                                       int width) {
    lanes::multiply<8, 6>(m, in, out, width);
}

constexpr SimdKernels kScalar = kernelsOfWidth<1>();
constexpr SimdKernels kSse2 = kernelsOfWidth<4>();
TUNEBOX_AVX2_TARGET void slotsToLanesAvx2(const float* slots, float* out, int subbands) {
    lanes::slotsToLanes<8>(slots, out, subbands);
}

TUNEBOX_AVX2_TARGET void dctAvx2(float* rows, int points, const float* inverseCosines) {
    lanes::dctOfSize<8>(rows, points, inverseCosines);
}

constexpr SimdKernels kAvx2{synthesisWindowAvx2, narrowSynthesisWindowAvx2, multiply18Avx2,
                            multiply6Avx2,       slotsToLanesAvx2,          dctAvx2};

}  // namespace

const SimdKernels& simdKernels(SimdPath path) {
    switch (path) {
        case SimdPath::kScalar:
            return kScalar;
        case SimdPath::kAvx2:
            return kAvx2;
        case SimdPath::kSse2:
            break;
    }
    return kSse2;
}

}  // namespace tunebox
