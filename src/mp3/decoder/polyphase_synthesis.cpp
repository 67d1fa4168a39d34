#include "mp3/decoder/polyphase_synthesis.h"

#include <algorithm>
#include <cmath>
#include <cstring>

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

// Rounds half away from zero. Clipping is symmetric, as in the reference
// decoder of the compliance streams: a full negative peak gives -32767.
// Done in steps over whole rows, as each step on its own vectorises.
std::array<int32_t, kDctLanes> toPcm(DctLanes values) {
    for (float& value : values) {
        value = std::min(std::max(value, -32767.0f), 32767.0f);
    }
    std::array<int32_t, kDctLanes> rounded;
    for (int lane = 0; lane < kDctLanes; ++lane) {
        rounded[lane] = static_cast<int32_t>(values[lane] + std::copysign(0.5f, values[lane]));
    }
    return rounded;
}

// Four slots' sums in one vector register (a GCC and Clang extension):
// with plain arrays the compiler keeps the sums in memory and pays a load
// and a store for every tap.
using FloatX4 = float __attribute__((vector_size(16)));
constexpr int kGroups = kDctLanes / 4;
static_assert(kDctLanes % 4 == 0);

FloatX4 load4(const float* from) {
    FloatX4 v;
    std::memcpy(&v, from, sizeof v);
    return v;
}

// One output index for every slot, the taps outermost so that each pair
// of weights is loaded once for the whole row.
DctLanes windowedSums(const float* low, const float* high, int j) {
    const WindowWeights& weights = windowWeights();
    std::array<FloatX4, kGroups> sums{};
    for (int i = 0; i < 8; ++i) {
        const float lowWeight = weights.low[i][j];
        const float highWeight = weights.high[i][j];
#pragma GCC unroll 8
        for (int g = 0; g < kGroups; ++g) {
            sums[g] +=
                load4(low + 4 * g - 2 * i) * lowWeight + load4(high + 4 * g - 2 * i) * highWeight;
        }
    }
    DctLanes result;
    std::memcpy(result.data(), sums.data(), sizeof result);
    return result;
}

}  // namespace

void PolyphaseSynthesis::reset() {
    lowHalf_ = {};
    highHalf_ = {};
}

void PolyphaseSynthesis::synthesize(const SubbandSamples& subbands, int16_t* out, int stride,
                                    int slots) {
    std::array<DctLanes, 32> lanes;
    for (int k = 0; k < 32; ++k) {
        for (int slot = 0; slot < slots; ++slot) {
            lanes[k][slot] = subbands[slot][k];
        }
        std::fill(lanes[k].begin() + slots, lanes[k].end(), 0.0f);
    }
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
void PolyphaseSynthesis::window(int16_t* out, int stride, int slots) const {
    for (int j = 0; j < 32; ++j) {
        const auto pcm =
            toPcm(windowedSums(&lowHalf_[j][kFirstSlot], &highHalf_[j][kFirstSlot - 1], j));
        for (int slot = 0; slot < slots; ++slot) {
            out[(slot * 32 + j) * stride] = static_cast<int16_t>(pcm[slot]);
        }
    }
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
