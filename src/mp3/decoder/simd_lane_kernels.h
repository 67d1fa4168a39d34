#pragma once
// The kernels' bodies, written once over a vector of `Width` lanes (a plain
// float for one). Only simd_kernels.cpp includes this, once per path; every
// lane sees the same operations in the same order whatever the width, which
// is what keeps the paths bit-identical.

#include <algorithm>
#include <cstring>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

#include "mp3/decoder/simd_kernels.h"

namespace tunebox::lanes {

// GCC and Clang vector extensions; one specialisation per width, as the
// size attribute does not take a template argument.
template <int Width>
struct VectorOf;

template <>
struct VectorOf<1> {
    using Type = float;
};

template <>
struct VectorOf<4> {
    using Type = float __attribute__((vector_size(16)));
};

template <>
struct VectorOf<8> {
    using Type = float __attribute__((vector_size(32)));
};

template <int Width>
using Vector = typename VectorOf<Width>::Type;

// Vectors go in and out by reference: passed by value, a 32-byte vector
// would take a different calling convention with and without AVX.
template <int Width>
[[gnu::always_inline]] inline void load(Vector<Width>& v, const float* from) {
    std::memcpy(&v, from, sizeof v);
}

template <int Width>
[[gnu::always_inline]] inline void store(float* to, const Vector<Width>& v) {
    std::memcpy(to, &v, sizeof v);
}

inline constexpr int kWindowTaps = 8;
inline constexpr int kGranuleSlots = 18;
// The slot lanes of the window, the granule's 18 rounded up to whole
// vectors of four (the history rows are padded to match).
inline constexpr int kWindowLanes = 20;

// How a window sums its products and clips its samples. The full bank
// adds a tap's two products together before they join the running sum and
// clips symmetrically, as the reference decoder of the compliance streams
// does; the narrow one adds the products one by one and clips to the
// 16-bit range. Each keeps its own so that its output never changes.
struct WindowArithmetic {
    bool pairedProducts;
    float floor;
};
inline constexpr WindowArithmetic kFullWindow{true, -32767.0f};
inline constexpr WindowArithmetic kNarrowWindow{false, -32768.0f};

// sum += low times its weight and high times its weight, in that order.
template <int Width, WindowArithmetic Arithmetic>
[[gnu::always_inline]] inline void accumulate(Vector<Width>& sum, const float* low,
                                              const float* high, float lowWeight,
                                              float highWeight) {
    Vector<Width> lowV;
    Vector<Width> highV;
    load<Width>(lowV, low);
    load<Width>(highV, high);
    if constexpr (Arithmetic.pairedProducts) {
        sum += lowV * lowWeight + highV * highWeight;
    } else {
        sum += lowV * lowWeight;
        sum += highV * highWeight;
    }
}

// Clips and adds the half that, cut towards zero, rounds half away from
// zero.
template <int Width, WindowArithmetic Arithmetic>
[[gnu::always_inline]] inline void storeRoundable(const Vector<Width>& input, float* to) {
    Vector<Width> sums = input;
    const Vector<Width> ceiling = Vector<Width>{} + 32767.0f;
    const Vector<Width> floor = Vector<Width>{} + Arithmetic.floor;
    sums = sums > ceiling ? ceiling : sums;
    sums = sums < floor ? floor : sums;
    const Vector<Width> zero{};
    const Vector<Width> half = sums < zero ? zero - 0.5f : zero + 0.5f;
    sums += half;
    store<Width>(to, sums);
}

// Output j of `Vectors` vectors of Width consecutive slots from `first`
// on, then `Tails` vectors of four: the sum over taps i of V[j] of slot
// t - 2i times the low weight and V[outputs + j] of slot t - 2i - 1 times
// the high weight. Each weight is loaded once for all the vectors.
template <int Width, int Vectors, int Tails, WindowArithmetic Arithmetic>
[[gnu::always_inline]] inline void windowRow(const SynthesisWindowJob& job, int j, int first,
                                             float* pcm) {
    const std::size_t row = job.rowStride * static_cast<std::size_t>(j);
    const float* low = job.low + row + first;
    const float* high = job.high + row + first;
    constexpr int kTailStart = Width * Vectors;
    Vector<Width> sums[Vectors] = {};
    Vector<4> tails[Tails > 0 ? Tails : 1] = {};
    for (int i = 0; i < kWindowTaps; ++i) {
        const float lowWeight = job.lowWeights[job.outputs * i + j];
        const float highWeight = job.highWeights[job.outputs * i + j];
#pragma GCC unroll 8
        for (int v = 0; v < Vectors; ++v) {
            accumulate<Width, Arithmetic>(sums[v], low + Width * v - 2 * i,
                                          high + Width * v - 2 * i, lowWeight, highWeight);
        }
#pragma GCC unroll 8
        for (int v = 0; v < Tails; ++v) {
            accumulate<4, Arithmetic>(tails[v], low + kTailStart + 4 * v - 2 * i,
                                      high + kTailStart + 4 * v - 2 * i, lowWeight, highWeight);
        }
    }
#pragma GCC unroll 8
    for (int v = 0; v < Vectors; ++v) {
        storeRoundable<Width, Arithmetic>(sums[v], pcm + first + Width * v);
    }
#pragma GCC unroll 8
    for (int v = 0; v < Tails; ++v) {
        storeRoundable<4, Arithmetic>(tails[v], pcm + first + kTailStart + 4 * v);
    }
}

// The granule's slots: one by one on the scalar path, otherwise as many
// whole vectors of Width as fit, the rest in vectors of four.
template <int Width, WindowArithmetic Arithmetic>
[[gnu::always_inline]] inline void synthesisWindow(const SynthesisWindowJob& job) {
    constexpr int kWide = kWindowLanes / Width;
    constexpr int kTails = (kWindowLanes - kWide * Width) / 4;
    for (int j = 0; j < job.outputs; ++j) {
        float pcm[kWindowLanes];
        if constexpr (Width == 1) {
            for (int slot = 0; slot < kGranuleSlots; ++slot) {
                windowRow<1, 1, 0, Arithmetic>(job, j, slot, pcm);
            }
        } else {
            windowRow<Width, kWide, kTails, Arithmetic>(job, j, 0, pcm);
        }
        for (int slot = 0; slot < kGranuleSlots; ++slot) {
            job.out[(slot * job.outputs + j) * job.stride] =
                static_cast<int16_t>(static_cast<int32_t>(pcm[slot]));
        }
    }
}

// Eight lanes at a time, six rows at a time: each input vector is loaded
// once for the six, and the six sums are independent chains of additions
// that the processor overlaps. The loops over rows and vectors are
// unrolled so that the sums are registers at all: as an indexed array the
// compiler keeps them in memory. The scalar path goes row by row.
template <int Width, int Size>
[[gnu::always_inline]] inline void multiply(const float* matrix, const KernelLanes* in,
                                            KernelLanes* out, int width) {
    constexpr int kVectors = 8 / Width;
    constexpr int kRows = Width == 1 ? 1 : 6;
    static_assert(Size % kRows == 0);
    for (int first = 0; first < width; first += 8) {
        for (int row = 0; row < Size; row += kRows) {
            Vector<Width> sums[kRows][kVectors] = {};
            for (int column = 0; column < Size; ++column) {
#pragma GCC unroll 8
                for (int v = 0; v < kVectors; ++v) {
                    Vector<Width> x;
                    load<Width>(x, in[column].data() + first + Width * v);
#pragma GCC unroll 6
                    for (int r = 0; r < kRows; ++r) {
                        sums[r][v] += matrix[Size * (row + r) + column] * x;
                    }
                }
            }
#pragma GCC unroll 6
            for (int r = 0; r < kRows; ++r) {
#pragma GCC unroll 8
                for (int v = 0; v < kVectors; ++v) {
                    store<Width>(out[row + r].data() + first + Width * v, sums[r][v]);
                }
            }
        }
    }
}

// One slot's subband sample into lane `slot` of row k, for k below
// `subbands`.
[[gnu::always_inline]] inline void slotToLanes(const float* slots, int slot, float* lanes,
                                               int subbands) {
    for (int k = 0; k < subbands; ++k) {
        lanes[kWindowLanes * k + slot] = slots[kKernelLanes * slot + k];
    }
}

// [slot][subband] to [subband][slot] for the subbands below `subbands` (a
// multiple of four), the padding lanes zero. Blocks of four slots by four
// subbands are turned in registers where the processor has the shuffles;
// only whole values move, so every path gives the same.
template <int Width>
[[gnu::always_inline]] inline void slotsToLanes(const float* slots, float* lanes, int subbands) {
    int slot = 0;
#if defined(__SSE2__)
    if constexpr (Width > 1) {
        for (; slot + 4 <= kGranuleSlots; slot += 4) {
            for (int k = 0; k < subbands; k += 4) {
                __m128 r0 = _mm_loadu_ps(slots + kKernelLanes * slot + k);
                __m128 r1 = _mm_loadu_ps(slots + kKernelLanes * (slot + 1) + k);
                __m128 r2 = _mm_loadu_ps(slots + kKernelLanes * (slot + 2) + k);
                __m128 r3 = _mm_loadu_ps(slots + kKernelLanes * (slot + 3) + k);
                _MM_TRANSPOSE4_PS(r0, r1, r2, r3);
                _mm_storeu_ps(lanes + kWindowLanes * k + slot, r0);
                _mm_storeu_ps(lanes + kWindowLanes * (k + 1) + slot, r1);
                _mm_storeu_ps(lanes + kWindowLanes * (k + 2) + slot, r2);
                _mm_storeu_ps(lanes + kWindowLanes * (k + 3) + slot, r3);
            }
        }
    }
#endif
    for (; slot < kGranuleSlots; ++slot) {
        slotToLanes(slots, slot, lanes, subbands);
    }
    for (int k = 0; k < subbands; ++k) {
        std::fill_n(lanes + kWindowLanes * k + kGranuleSlots, kWindowLanes - kGranuleSlots, 0.0f);
    }
}

// The fast DCT over the window's kWindowLanes slot lanes (see
// fast_dct32.h): rows of a point each, transformed in place. Every row
// operation runs over whole vectors of Width, then of four.
template <int W>
[[gnu::always_inline]] inline void butterflyVector(const float* a, const float* b, float scale,
                                                   float* sum, float* difference) {
    Vector<W> va;
    Vector<W> vb;
    load<W>(va, a);
    load<W>(vb, b);
    const Vector<W> total = va + vb;
    const Vector<W> scaled = (va - vb) * scale;
    store<W>(sum, total);
    store<W>(difference, scaled);
}

template <int W>
[[gnu::always_inline]] inline void addVector(const float* a, const float* b, float* to) {
    Vector<W> va;
    Vector<W> vb;
    load<W>(va, a);
    load<W>(vb, b);
    const Vector<W> total = va + vb;
    store<W>(to, total);
}

// sum = a + b and difference = (a - b) times scale, lane by lane.
template <int Width>
[[gnu::always_inline]] inline void butterflyRow(const float* a, const float* b, float scale,
                                                float* sum, float* difference) {
    constexpr int kWide = kWindowLanes / Width;
#pragma GCC unroll 20
    for (int v = 0; v < kWide; ++v) {
        butterflyVector<Width>(a + Width * v, b + Width * v, scale, sum + Width * v,
                               difference + Width * v);
    }
    for (int lane = kWide * Width; lane < kWindowLanes; lane += 4) {
        butterflyVector<4>(a + lane, b + lane, scale, sum + lane, difference + lane);
    }
}

// to = a + b, lane by lane.
template <int Width>
[[gnu::always_inline]] inline void addRow(const float* a, const float* b, float* to) {
    constexpr int kWide = kWindowLanes / Width;
#pragma GCC unroll 20
    for (int v = 0; v < kWide; ++v) {
        addVector<Width>(a + Width * v, b + Width * v, to + Width * v);
    }
    for (int lane = kWide * Width; lane < kWindowLanes; lane += 4) {
        addVector<4>(a + lane, b + lane, to + lane);
    }
}

// Even outputs are the DCT of the sums of mirrored inputs, odd ones that
// of their scaled differences, each added to the next.
template <int Width, int N>
[[gnu::always_inline]] inline void dct(float* x, const float* inverseCosines) {
    if constexpr (N > 1) {
        constexpr int kHalf = N / 2;
        float sums[kHalf * kWindowLanes];
        float differences[kHalf * kWindowLanes];
        for (int k = 0; k < kHalf; ++k) {
            butterflyRow<Width>(x + kWindowLanes * k, x + kWindowLanes * (N - 1 - k),
                                inverseCosines[k], sums + kWindowLanes * k,
                                differences + kWindowLanes * k);
        }
        dct<Width, kHalf>(sums, inverseCosines + kHalf);
        dct<Width, kHalf>(differences, inverseCosines + kHalf);
        for (int m = 0; m < kHalf; ++m) {
            std::copy_n(sums + kWindowLanes * m, kWindowLanes, x + kWindowLanes * 2 * m);
            float* odd = x + kWindowLanes * (2 * m + 1);
            const float* difference = differences + kWindowLanes * m;
            if (m + 1 < kHalf) {
                addRow<Width>(difference, difference + kWindowLanes, odd);
            } else {
                std::copy_n(difference, kWindowLanes, odd);
            }
        }
    }
}

}  // namespace tunebox::lanes

namespace tunebox::lanes {

// The transforms at the sizes the syntheses use.
template <int Width>
[[gnu::always_inline]] inline void dctOfSize(float* rows, int points, const float* inverseCosines) {
    if (points == 32) {
        dct<Width, 32>(rows, inverseCosines);
    } else if (points == 16) {
        dct<Width, 16>(rows, inverseCosines);
    } else {
        dct<Width, 8>(rows, inverseCosines);
    }
}

}  // namespace tunebox::lanes
