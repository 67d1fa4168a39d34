#include "mp3/decoder/polyphase_synthesis.h"

#include <algorithm>
#include <cmath>

#include "mp3/decoder/simd_kernels.h"
#include "mp3/decoder/synthesis_window.h"

namespace tunebox {
namespace {

constexpr int kFirstSlot = PolyphaseSynthesis::kHistorySlots;

// The window, scaled to 16-bit full scale, as the weights of each V half
// in the order the sums below read them: weights[i][j] for V[j] and
// V[32 + j] of slots t - 2i and t - 2i - 1. The history keeps the DCT
// outputs without their signs (see store), so the signs go in here.
struct WindowWeights {
    std::array<std::array<float, 32>, 8> low{};
    std::array<std::array<float, 32>, 8> high{};
};

const WindowWeights& windowWeights() {
    static const WindowWeights weights = [] {
        WindowWeights built;
        const auto& d = synthesisWindow();
        for (int i = 0; i < 8; ++i) {
            for (int j = 0; j < 32; ++j) {
                const double lowSign = j < 16 ? 1.0 : -1.0;
                built.low[i][j] = static_cast<float>(lowSign * d[64 * i + j] * 32768.0);
                built.high[i][j] = static_cast<float>(-d[64 * i + 32 + j] * 32768.0);
            }
        }
        return built;
    }();
    return weights;
}

}  // namespace

void PolyphaseSynthesis::reset() {
    lowHalf_ = {};
    highHalf_ = {};
}

void PolyphaseSynthesis::synthesize(const SubbandSamples& subbands, int16_t* out, int stride,
                                    int slots) {
    static_assert(sizeof(SubbandSamples) == sizeof(float) * kSlotsPerGranule * 32 &&
                  kDctLanes == 20);
    // Lanes past a shorter run carry what the caller's array holds there;
    // their samples are never written out nor kept.
    std::array<DctLanes, 32> lanes;
    simdKernels().slotsToLanes(subbands[0].data(), lanes[0].data(), 32);
    dct32(lanes);
    store(lanes);
    window(out, stride, slots);
    keepHistory(slots);
}

// The matrixing V[i] = sum of cos((16 + i)(2k + 1) pi / 64) S[k] is a
// 32-point DCT-II X of S read out with symmetries: V[0..15] = X[16..31],
// V[16] = 0, V[17..47] = -X[31..1], V[48..63] = -X[0..15]. Kept here
// without the signs.
void PolyphaseSynthesis::store(const std::array<DctLanes, 32>& x) {
    for (int j = 0; j < 16; ++j) {
        std::copy(x[16 + j].begin(), x[16 + j].end(), &lowHalf_[j][kFirstSlot]);
        std::copy(x[16 - j].begin(), x[16 - j].end(), &highHalf_[j][kFirstSlot]);
        std::copy(x[j].begin(), x[j].end(), &highHalf_[16 + j][kFirstSlot]);
    }
    std::fill_n(&lowHalf_[16][kFirstSlot], kDctLanes, 0.0f);
    for (int j = 17; j < 32; ++j) {
        std::copy(x[48 - j].begin(), x[48 - j].end(), &lowHalf_[j][kFirstSlot]);
    }
}

// Output j of slot t sums, for i = 0..7, V[j] of slot t - 2i times
// D[64i + j] and V[32 + j] of slot t - 2i - 1 times D[64i + 32 + j]. Run
// for all slots of the granule at once, each reads a run of consecutive
// slots from the history.
// Rounding is half away from zero; clipping is symmetric, as in the
// reference decoder of the compliance streams: a full negative peak gives
// -32767.
void PolyphaseSynthesis::window(int16_t* out, int stride, int slots) const {
    const WindowWeights& weights = windowWeights();
    windowRun(simdKernels().synthesisWindow,
              {&lowHalf_[0][kFirstSlot], &highHalf_[0][kFirstSlot - 1], lowHalf_[0].size(),
               weights.low[0].data(), weights.high[0].data(), out, stride, 32},
              slots);
}

// The slots past the run (a shorter run leaves some) are overwritten by
// the next run's.
void PolyphaseSynthesis::keepHistory(int slots) {
    const int keptFrom = kFirstSlot + slots - kHistorySlots;
    for (SlotHistory* history : {&lowHalf_, &highHalf_}) {
        for (auto& row : *history) {
            std::copy_n(row.begin() + keptFrom, kHistorySlots, row.begin());
        }
    }
}

}  // namespace tunebox
