#include "mp3/decoder/narrow_synthesis.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "mp3/decoder/fast_dct32.h"
#include "mp3/decoder/synthesis_window.h"

namespace tunebox {
namespace {

// The window for one width n: 16n taps, scaled to 16-bit full scale.
std::vector<float> buildWindow(int n) {
    const int step = kSubbands / n;
    std::vector<float> window(static_cast<std::size_t>(16 * n));
    for (int tap = 0; tap < 16 * n; ++tap) {
        window[static_cast<std::size_t>(tap)] =
            static_cast<float>(synthesisWindow()[static_cast<std::size_t>(tap * step)] * 32768.0);
    }
    return window;
}

using SlotRows = std::array<DctLanes, NarrowSynthesis::kMaxSubbands>;

// V[i] = sum over k of cos((n / 2 + i)(2k + 1) pi / 2n) S[k], read out of
// the DCT X of S by the cosine's symmetries around (n / 2 + i) = n and 2n.
template <int N>
void matrix(const SlotRows& x, int slot, float* v) {
    for (int i = 0; i < N / 2; ++i) {
        v[i] = x[N / 2 + i][slot];
    }
    v[N / 2] = 0.0f;
    for (int i = N / 2 + 1; i <= 3 * N / 2; ++i) {
        v[i] = -x[3 * N / 2 - i][slot];
    }
    for (int i = 3 * N / 2 + 1; i < 2 * N; ++i) {
        v[i] = -x[i - 3 * N / 2][slot];
    }
}

// Rounds half away from zero.
int16_t clipToPcm16(float value) {
    const float clipped = std::clamp(value, -32768.0f, 32767.0f);
    return static_cast<int16_t>(clipped + std::copysign(0.5f, clipped));
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
    static const std::vector<float> window = buildWindow(N);
    // The whole granule's slots through one fast DCT, a slot per lane.
    SlotRows x;
    for (int k = 0; k < N; ++k) {
        for (int slot = 0; slot < slots; ++slot) {
            x[k][slot] = in[slot][k];
        }
        std::fill(x[k].begin() + slots, x[k].end(), 0.0f);
    }
    dctNarrow(x.data(), N);
    for (int slot = 0; slot < slots; ++slot) {
        matrix<N>(x, slot, history_[kHistorySlots + slot].data());
    }
    for (int slot = 0; slot < slots; ++slot) {
        // Each window row of N taps pairs with one half of a V vector: the
        // first half of the vector `row` slots back for even rows, the
        // second half for odd ones. Outputs innermost, so the sums
        // vectorise.
        std::array<float, N> sums{};
        for (int row = 0; row < 16; ++row) {
            const float* v = history_[kHistorySlots + slot - row].data() + ((row & 1) ? N : 0);
            const float* w = window.data() + row * N;
            for (int j = 0; j < N; ++j) {
                sums[j] += v[j] * w[j];
            }
        }
        for (int j = 0; j < N; ++j) {
            out[(slot * N + j) * stride] = clipToPcm16(sums[j]);
        }
    }
    std::copy_n(history_.begin() + slots, kHistorySlots, history_.begin());
}

}  // namespace tunebox
