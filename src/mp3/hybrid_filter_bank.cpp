#include "mp3/hybrid_filter_bank.h"

#include <cmath>
#include <numbers>

namespace tunebox {
namespace {

constexpr int kLongPoints = 36;
constexpr int kShortPoints = 12;
constexpr int kPaddedOutputs = 20;

struct TransformTables {
    // Window by block type (the short entry is unused: short windows below).
    std::array<std::array<float, kLongPoints>, 4> longWindows{};
    std::array<float, kShortPoints> shortWindow{};
    // The long transform's outputs come in mirrored pairs: only 0..8 and
    // 18..26 are computed. Stored [line][output] so that each line adds
    // into all outputs at once, which vectorises; rows are padded to a
    // multiple of four outputs.
    std::array<std::array<float, kPaddedOutputs>, 18> longCosines{};
    std::array<std::array<float, kShortPoints>, 6> shortCosines{};
};

double sineWindow(int i, int length) {
    return std::sin(std::numbers::pi / length * (i + 0.5));
}

TransformTables buildTables() {
    TransformTables t;
    for (int i = 0; i < kLongPoints; ++i) {
        t.longWindows[0][i] = static_cast<float>(sineWindow(i, kLongPoints));
    }
    for (int i = 0; i < kLongPoints; ++i) {
        double start = 0.0;
        if (i < 18) {
            start = sineWindow(i, kLongPoints);
        } else if (i < 24) {
            start = 1.0;
        } else if (i < 30) {
            start = sineWindow(i - 18, kShortPoints);
        }
        t.longWindows[1][i] = static_cast<float>(start);
    }
    for (int i = 0; i < kLongPoints; ++i) {
        // The stop window is the start window reversed in time.
        t.longWindows[3][i] = t.longWindows[1][kLongPoints - 1 - i];
    }
    for (int i = 0; i < kShortPoints; ++i) {
        t.shortWindow[i] = static_cast<float>(sineWindow(i, kShortPoints));
    }
    for (int row = 0; row < 18; ++row) {
        const int i = row < 9 ? row : row + 9;
        for (int k = 0; k < 18; ++k) {
            t.longCosines[k][row] =
                static_cast<float>(std::cos(std::numbers::pi / 72.0 * (2 * i + 19) * (2 * k + 1)));
        }
    }
    for (int i = 0; i < kShortPoints; ++i) {
        for (int k = 0; k < 6; ++k) {
            t.shortCosines[k][i] =
                static_cast<float>(std::cos(std::numbers::pi / 24.0 * (2 * i + 7) * (2 * k + 1)));
        }
    }
    return t;
}

const TransformTables& tables() {
    static const TransformTables built = buildTables();
    return built;
}

// 18 lines to 36 windowed samples.
void longTransform(const float* lines, const std::array<float, kLongPoints>& window,
                   std::array<float, kLongPoints>& out) {
    const TransformTables& t = tables();
    std::array<float, kPaddedOutputs> half{};
    for (int k = 0; k < 18; ++k) {
        const float line = lines[k];
        for (int row = 0; row < kPaddedOutputs; ++row) {
            half[row] += line * t.longCosines[k][row];
        }
    }
    for (int i = 0; i < 9; ++i) {
        out[i] = half[i] * window[i];
        out[17 - i] = -half[i] * window[17 - i];
        out[18 + i] = half[9 + i] * window[18 + i];
        out[35 - i] = half[9 + i] * window[35 - i];
    }
}

// Three interleaved windows of 6 lines to 36 samples, overlapped in place.
void shortTransforms(const float* lines, std::array<float, kLongPoints>& out) {
    const TransformTables& t = tables();
    out.fill(0.0f);
    for (int window = 0; window < 3; ++window) {
        std::array<float, kShortPoints> sums{};
        for (int k = 0; k < 6; ++k) {
            const float line = lines[3 * k + window];
            for (int i = 0; i < kShortPoints; ++i) {
                sums[i] += line * t.shortCosines[k][i];
            }
        }
        for (int i = 0; i < kShortPoints; ++i) {
            out[6 + 6 * window + i] += sums[i] * t.shortWindow[i];
        }
    }
}

int activeSubbands(const Spectrum& spectrum) {
    int end = kGranuleLines;
    while (end > 0 && spectrum[end - 1] == 0.0f) {
        --end;
    }
    return (end + 17) / 18;
}

}  // namespace

void HybridFilterBank::process(const Spectrum& spectrum, const GranuleChannelInfo& info,
                               SubbandSamples& out) {
    const TransformTables& t = tables();
    const int active = activeSubbands(spectrum);
    std::array<float, kLongPoints> samples{};
    for (int sb = 0; sb < kSubbands; ++sb) {
        const bool longPart = info.mixedBlock && sb < 2;
        const BlockType type = longPart ? BlockType::Normal : info.blockType;
        if (sb >= active) {
            samples.fill(0.0f);
        } else if (type == BlockType::Short) {
            shortTransforms(&spectrum[18 * sb], samples);
        } else {
            longTransform(&spectrum[18 * sb], t.longWindows[static_cast<int>(type)], samples);
        }
        const float sign = (sb & 1) ? -1.0f : 1.0f;
        for (int i = 0; i < kSlotsPerGranule; ++i) {
            const float value = samples[i] + overlap_[sb][i];
            out[i][sb] = (i & 1) ? value * sign : value;
            overlap_[sb][i] = samples[18 + i];
        }
    }
}

}  // namespace tunebox
