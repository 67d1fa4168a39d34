#include "mp3/decoder/hybrid_filter_bank.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "mp3/decoder/simd_kernels.h"

namespace tunebox {
namespace {

// Every step below runs over all subbands at once, one subband per lane:
// the subbands of a granule share their transform, so loops over the lane
// index vectorise, and the result lands in the [time slot][subband] layout
// the synthesis reads. The loops always cover all lanes, silent subbands
// included: a fixed count is what lets the compiler vectorise them at -O2.
// Only the lanes below a width (a whole number of chunks) that covers
// the subbands with any non-zero line are transformed: above it the
// transform of zeros is zero.
using Lanes = KernelLanes;
static_assert(kKernelLanes == kSubbands);
constexpr int kChunk = 8;

constexpr int kLongPoints = 36;
constexpr int kShortPoints = 12;
constexpr int kShortLines = 6;

struct TransformTables {
    // Window by block type (the short entry is unused: short windows below).
    std::array<std::array<float, kLongPoints>, 4> longWindows{};
    std::array<float, kShortPoints> shortWindow{};
    // The 18-point DCT-IV of a long block, cos((2j + 1)(2k + 1) pi / 72).
    // Taken as a plain matrix: the faster factorisations (a DCT-II and a
    // running sum) carry float rounding from one output into the next,
    // which shows as 1 LSB differences on loud material.
    std::array<std::array<float, 18>, 18> longCosines{};
    // The 6-point DCT-IV of a short block.
    std::array<std::array<float, kShortLines>, kShortLines> shortCosines{};
};

double sineWindow(int i, int length) {
    return std::sin(std::numbers::pi / length * (i + 0.5));
}

void buildWindows(TransformTables& t) {
    for (int i = 0; i < kLongPoints; ++i) {
        t.longWindows[0][i] = static_cast<float>(sineWindow(i, kLongPoints));
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
}

TransformTables buildTables() {
    using std::numbers::pi;
    TransformTables t;
    buildWindows(t);
    for (int j = 0; j < 18; ++j) {
        for (int k = 0; k < 18; ++k) {
            t.longCosines[j][k] =
                static_cast<float>(std::cos(pi * (2 * j + 1) * (2 * k + 1) / 72.0));
        }
    }
    for (int j = 0; j < kShortLines; ++j) {
        for (int k = 0; k < kShortLines; ++k) {
            t.shortCosines[j][k] =
                static_cast<float>(std::cos(pi * (2 * j + 1) * (2 * k + 1) / 24.0));
        }
    }
    return t;
}

const TransformTables& tables() {
    static const TransformTables built = buildTables();
    return built;
}

using TimeSamples = std::array<Lanes, kLongPoints>;

// 18 lines to 36 windowed samples. The inverse MDCT is an 18-point DCT-IV
// y read out with its symmetries: x[i] = y[i + 9] for i < 9, -y[26 - i]
// below 27, -y[i - 27] above.
template <int Width>
void longTransform(const std::array<Lanes, 18>& lines, const std::array<float, kLongPoints>& window,
                   TimeSamples& out) {
    std::array<Lanes, 18> y;
    simdKernels().multiply18(tables().longCosines[0].data(), lines.data(), y.data(), Width);
    for (int i = 0; i < kLongPoints; ++i) {
        const bool negated = i >= 9;
        const int j = i < 9 ? i + 9 : (i < 27 ? 26 - i : i - 27);
        const float w = negated ? -window[i] : window[i];
        for (int sb = 0; sb < Width; ++sb) {
            out[i][sb] = y[j][sb] * w;
        }
    }
}

// Three interleaved windows of 6 lines, each a 12-point inverse MDCT (a
// 6-point DCT-IV read out as the long one is), overlapped in place.
template <int Width>
void shortTransforms(const std::array<Lanes, 18>& lines, TimeSamples& out) {
    const TransformTables& t = tables();
    out = {};
    for (int window = 0; window < 3; ++window) {
        std::array<Lanes, kShortLines> in;
        for (int k = 0; k < kShortLines; ++k) {
            in[k] = lines[3 * k + window];
        }
        std::array<Lanes, kShortLines> y;
        simdKernels().multiply6(t.shortCosines[0].data(), in.data(), y.data(), Width);
        for (int i = 0; i < kShortPoints; ++i) {
            const bool negated = i >= 3;
            const int j = i < 3 ? i + 3 : (i < 9 ? 8 - i : i - 9);
            const float w = negated ? -t.shortWindow[i] : t.shortWindow[i];
            Lanes& target = out[6 + 6 * window + i];
            for (int sb = 0; sb < Width; ++sb) {
                target[sb] += y[j][sb] * w;
            }
        }
    }
}

// The transforms of one granule over the lanes below Width; the lanes
// above are left as they are.
template <int Width>
void transformLanes(const Spectrum& spectrum, const GranuleChannelInfo& info,
                    TimeSamples& samples) {
    const TransformTables& t = tables();
    std::array<Lanes, 18> lines;
    for (int k = 0; k < 18; ++k) {
        for (int sb = 0; sb < Width; ++sb) {
            lines[k][sb] = spectrum[18 * sb + k];
        }
    }
    if (info.shortBlocks()) {
        shortTransforms<Width>(lines, samples);
    } else {
        longTransform<Width>(lines, t.longWindows[static_cast<int>(info.blockType)], samples);
    }
    if (info.mixedBlock) {
        // The two lowest subbands take the normal window whatever the block
        // type says for the rest.
        TimeSamples normal;
        longTransform<kChunk>(lines, t.longWindows[0], normal);
        for (int i = 0; i < kLongPoints; ++i) {
            std::copy_n(normal[i].begin(), 2, samples[i].begin());
        }
    }
}

using TransformRoutine = void (*)(const Spectrum&, const GranuleChannelInfo&, TimeSamples&);
constexpr std::array<TransformRoutine, kSubbands / kChunk> kTransformsByChunks{
    transformLanes<8>, transformLanes<16>, transformLanes<24>, transformLanes<32>};

}  // namespace

void HybridFilterBank::process(const Spectrum& spectrum, const GranuleChannelInfo& info,
                               int subbands, int synthesised, SubbandSamples& out) {
    const int chunks = std::clamp((subbands + kChunk - 1) / kChunk, 1, kSubbands / kChunk);
    const int width = chunks * kChunk;
    TimeSamples samples;
    for (Lanes& row : samples) {
        std::fill(row.begin() + width, row.begin() + std::max(width, synthesised), 0.0f);
    }
    kTransformsByChunks[chunks - 1](spectrum, info, samples);
    // Overlap-add and the frequency inversion (odd subbands negated in odd
    // slots) in one pass, into a local array: the compiler cannot vectorise
    // a loop whose output might overlap the state it reads. A chunk's
    // fixed count of lanes is what lets it vectorise at all.
    static constexpr Lanes kOnes = [] {
        Lanes ones{};
        ones.fill(1.0f);
        return ones;
    }();
    static constexpr Lanes kOddNegated = [] {
        Lanes signs{};
        for (int sb = 0; sb < kSubbands; ++sb) {
            signs[sb] = (sb & 1) ? -1.0f : 1.0f;
        }
        return signs;
    }();
    SubbandSamples summed;
    for (int i = 0; i < kSlotsPerGranule; ++i) {
        const Lanes& signs = (i & 1) ? kOddNegated : kOnes;
        for (int chunk = 0; chunk < synthesised; chunk += kChunk) {
            for (int sb = chunk; sb < chunk + kChunk; ++sb) {
                summed[i][sb] = (samples[i][sb] + overlap_[i][sb]) * signs[sb];
            }
        }
    }
    // Chunk by chunk: copies of a fixed size are moves in registers, not
    // calls.
    for (int i = 0; i < kSlotsPerGranule; ++i) {
        for (int chunk = 0; chunk < synthesised; chunk += kChunk) {
            std::copy_n(summed[i].begin() + chunk, kChunk, out[i].begin() + chunk);
            std::copy_n(samples[kSlotsPerGranule + i].begin() + chunk, kChunk,
                        overlap_[i].begin() + chunk);
        }
    }
}

}  // namespace tunebox
