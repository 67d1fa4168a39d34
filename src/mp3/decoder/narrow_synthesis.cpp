#include "mp3/decoder/narrow_synthesis.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "mp3/decoder/synthesis_window.h"

namespace tunebox {
namespace {

// Matrixing cosines and window for one width n.
struct NarrowTables {
    std::vector<float> cosines;  // [i][k]: cos((n / 2 + i)(2k + 1) pi / 2n), i < 2n
    std::vector<float> window;   // 16n taps, scaled to 16-bit full scale
};

NarrowTables buildTables(int n) {
    NarrowTables t;
    t.cosines.resize(static_cast<std::size_t>(2 * n * n));
    for (int i = 0; i < 2 * n; ++i) {
        for (int k = 0; k < n; ++k) {
            t.cosines[static_cast<std::size_t>(i * n + k)] = static_cast<float>(
                std::cos((n / 2 + i) * (2 * k + 1) * std::numbers::pi / (2.0 * n)));
        }
    }
    const int step = kSubbands / n;
    t.window.resize(static_cast<std::size_t>(16 * n));
    for (int tap = 0; tap < 16 * n; ++tap) {
        t.window[static_cast<std::size_t>(tap)] =
            static_cast<float>(synthesisWindow()[static_cast<std::size_t>(tap * step)] * 32768.0);
    }
    return t;
}

const NarrowTables& tablesFor(int n) {
    static const NarrowTables half = buildTables(16);
    static const NarrowTables quarter = buildTables(8);
    return n == 16 ? half : quarter;
}

int16_t clipToPcm16(float value) {
    const float clipped = std::clamp(value, -32768.0f, 32767.0f);
    return static_cast<int16_t>(std::lround(clipped));
}

}  // namespace

void NarrowSynthesis::synthesize(const SubbandSamples& in, int subbands, int16_t* out, int stride) {
    const int n = subbands;
    const NarrowTables& t = tablesFor(n);
    const std::size_t vectorSize = static_cast<std::size_t>(2 * n);
    for (int slot = 0; slot < kSlotsPerGranule; ++slot) {
        std::copy_backward(history_.begin(), history_.begin() + 15 * vectorSize,
                           history_.begin() + 16 * vectorSize);
        for (int i = 0; i < 2 * n; ++i) {
            float v = 0.0f;
            for (int k = 0; k < n; ++k) {
                v += t.cosines[static_cast<std::size_t>(i * n + k)] * in[slot][k];
            }
            history_[static_cast<std::size_t>(i)] = v;
        }
        // Each window row of n taps pairs with one half of a V vector: the
        // first half of slot 2r's vector, then the second half of slot
        // 2r + 1's.
        for (int j = 0; j < n; ++j) {
            float sum = 0.0f;
            for (int row = 0; row < 16; ++row) {
                const int slotBack = row;
                const int offset = (row & 1) ? n + j : j;
                sum += history_[static_cast<std::size_t>(slotBack * 2 * n + offset)] *
                       t.window[static_cast<std::size_t>(row * n + j)];
            }
            out[(slot * n + j) * stride] = clipToPcm16(sum);
        }
    }
}

}  // namespace tunebox
