#include "mp3/decoder/narrow_synthesis.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "mp3/decoder/synthesis_window.h"

namespace tunebox {
namespace {

constexpr int kFirstSlot = NarrowSynthesis::kHistorySlots;
constexpr int kWindowRows = 16;

// The window for width N, 16 rows of N taps taken at every (32 / N)th
// coefficient of the full one and scaled to 16-bit full scale, as the
// weights of each V half: even rows weigh the first half of a V vector,
// odd rows the second. The signs the history leaves out (see store) are
// folded in; a negated weight gives exactly the negated product.
template <int N>
struct NarrowWeights {
    std::array<std::array<float, N>, kWindowRows / 2> low{};
    std::array<std::array<float, N>, kWindowRows / 2> high{};
};

template <int N>
const NarrowWeights<N>& narrowWeights() {
    static const NarrowWeights<N> weights = [] {
        constexpr int kStep = kSubbands / N;
        const auto tap = [](int row, int j) {
            return static_cast<float>(synthesisWindow()[(row * N + j) * kStep] * 32768.0);
        };
        NarrowWeights<N> built;
        for (int i = 0; i < kWindowRows / 2; ++i) {
            for (int j = 0; j < N; ++j) {
                built.low[i][j] = j > N / 2 ? -tap(2 * i, j) : tap(2 * i, j);
                built.high[i][j] = -tap(2 * i + 1, j);
            }
        }
        return built;
    }();
    return weights;
}

// Four slots in one vector register (a GCC and Clang extension), so that
// the sums stay in registers over all taps and through the conversion.
using FloatX4 = float __attribute__((vector_size(16)));
using IntX4 = int32_t __attribute__((vector_size(16)));
constexpr int kGroups = kDctLanes / 4;
static_assert(kDctLanes % 4 == 0);
using PcmLanes = std::array<int32_t, kDctLanes>;

FloatX4 load4(const float* from) {
    FloatX4 v;
    std::memcpy(&v, from, sizeof v);
    return v;
}

// Clipped to the 16-bit range and rounded half away from zero: 0.5 with
// the sum's sign added, then truncated.
IntX4 toPcm(FloatX4 sum) {
    const FloatX4 lowest = {-32768.0f, -32768.0f, -32768.0f, -32768.0f};
    const FloatX4 highest = {32767.0f, 32767.0f, 32767.0f, 32767.0f};
    const FloatX4 half = {0.5f, 0.5f, 0.5f, 0.5f};
    sum = sum < lowest ? lowest : sum;
    sum = highest < sum ? highest : sum;
    const IntX4 sign = reinterpret_cast<IntX4>(sum) & INT32_MIN;
    return __builtin_convertvector(
        sum + reinterpret_cast<FloatX4>(reinterpret_cast<IntX4>(half) | sign), IntX4);
}

// Output j of every slot t: the sum over rows r = 0..15, in that order, of
// V[j] (even r) or V[N + j] (odd r) of slot t - r times the row's tap j.
// `low` and `high` point at the granule's first slot in the history.
template <int N>
PcmLanes windowedPcm(const float* low, const float* high, int j) {
    const NarrowWeights<N>& weights = narrowWeights<N>();
    std::array<FloatX4, kGroups> sums{};
    for (int i = 0; i < kWindowRows / 2; ++i) {
        const float lowWeight = weights.low[i][j];
        const float highWeight = weights.high[i][j];
#pragma GCC unroll 8
        for (int g = 0; g < kGroups; ++g) {
            sums[g] += load4(low + 4 * g - 2 * i) * lowWeight;
            sums[g] += load4(high + 4 * g - 2 * i - 1) * highWeight;
        }
    }
    PcmLanes pcm;
    for (int g = 0; g < kGroups; ++g) {
        const IntX4 group = toPcm(sums[g]);
        std::memcpy(&pcm[static_cast<std::size_t>(4 * g)], &group, sizeof group);
    }
    return pcm;
}

}  // namespace

void NarrowSynthesis::synthesize(const SubbandSamples& in, int subbands, int16_t* out, int stride,
                                 int slots) {
    if (subbands == kMaxSubbands) {
        synthesizeWidth<kMaxSubbands>(in, out, stride, slots);
    } else {
        synthesizeWidth<kMaxSubbands / 2>(in, out, stride, slots);
    }
}

template <int N>
void NarrowSynthesis::synthesizeWidth(const SubbandSamples& in, int16_t* out, int stride,
                                      int slots) {
    // The whole granule's slots through one fast DCT, a slot per lane.
    std::array<DctLanes, kMaxSubbands> x;
    for (int k = 0; k < N; ++k) {
        for (int slot = 0; slot < slots; ++slot) {
            x[k][slot] = in[slot][k];
        }
        std::fill(x[k].begin() + slots, x[k].end(), 0.0f);
    }
    dctNarrow(x.data(), N);
    store<N>(x);
    window<N>(out, stride, slots);
    keepHistory(N, slots);
}

// The matrixing V[i] = sum over k of cos((N / 2 + i)(2k + 1) pi / 2N) S[k]
// is the DCT X of S read out by the cosine's symmetries around
// (N / 2 + i) = N and 2N: V[0..N/2-1] = X[N/2..N-1], V[N/2] = 0,
// V[N/2+1..3N/2] = -X[N-1..0], V[3N/2+1..2N-1] = -X[1..N/2-1].
template <int N>
void NarrowSynthesis::store(const std::array<DctLanes, kMaxSubbands>& x) {
    const auto keep = [](const DctLanes& from, std::array<float, kHistorySlots + kDctLanes>& to) {
        std::copy(from.begin(), from.end(), to.begin() + kFirstSlot);
    };
    for (int j = 0; j < N / 2; ++j) {
        keep(x[N / 2 + j], lowHalf_[j]);
        keep(x[N / 2 - j], highHalf_[j]);
        keep(x[j], highHalf_[N / 2 + j]);
    }
    std::fill_n(lowHalf_[N / 2].begin() + kFirstSlot, kDctLanes, 0.0f);
    for (int j = N / 2 + 1; j < N; ++j) {
        keep(x[3 * N / 2 - j], lowHalf_[j]);
    }
}

template <int N>
void NarrowSynthesis::window(int16_t* out, int stride, int slots) const {
    for (int j = 0; j < N; ++j) {
        const PcmLanes pcm = windowedPcm<N>(&lowHalf_[j][kFirstSlot], &highHalf_[j][kFirstSlot], j);
        for (int slot = 0; slot < slots; ++slot) {
            out[(slot * N + j) * stride] = static_cast<int16_t>(pcm[slot]);
        }
    }
}

// The slots past a shorter run are overwritten by the next run's.
void NarrowSynthesis::keepHistory(int rows, int slots) {
    const int keptFrom = kFirstSlot + slots - kHistorySlots;
    for (SlotHistory* history : {&lowHalf_, &highHalf_}) {
        for (int j = 0; j < rows; ++j) {
            auto& row = (*history)[j];
            std::copy_n(row.begin() + keptFrom, kHistorySlots, row.begin());
        }
    }
}

}  // namespace tunebox
