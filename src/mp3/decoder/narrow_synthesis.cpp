#include "mp3/decoder/narrow_synthesis.h"

#include <algorithm>
#include <cstdint>

#include "mp3/decoder/simd_kernels.h"
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
    static_assert(sizeof(SubbandSamples) == sizeof(float) * kSlotsPerGranule * kSubbands &&
                  kDctLanes == 20);
    // The whole granule's slots through one fast DCT, a slot per lane;
    // lanes past a shorter run are never written out nor kept.
    std::array<DctLanes, kMaxSubbands> x;
    simdKernels().slotsToLanes(in[0].data(), x[0].data(), N);
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

// Output j of slot t: the sum over rows r = 0..15, in that order, of
// V[j] (even r) or V[N + j] (odd r) of slot t - r times the row's tap j.
template <int N>
void NarrowSynthesis::window(int16_t* out, int stride, int slots) const {
    const NarrowWeights<N>& weights = narrowWeights<N>();
    windowRun(simdKernels().narrowSynthesisWindow,
              {&lowHalf_[0][kFirstSlot], &highHalf_[0][kFirstSlot - 1], lowHalf_[0].size(),
               weights.low[0].data(), weights.high[0].data(), out, stride, N},
              slots);
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
