#include "effects/ten_band_filter.h"

namespace tunebox {
namespace {

// Running the bands one after another over the whole block leaves every band
// waiting on its own feedback. Instead the bands run as a skewed pipeline: in
// step t band b works on sample t - b, whose input band b - 1 produced in the
// step before, so all twenty band/channel filters of a step are independent
// and run four at a time. Each filter still performs exactly the same float
// operations in the same order, so the output does not change.
using Lanes = float __attribute__((vector_size(16)));
using LaneMask = int32_t __attribute__((vector_size(16)));

// Group g holds {band 2g left, band 2g right, band 2g+1 left, band 2g+1 right}.
constexpr int kGroups = kBandCount / 2;
constexpr int64_t kPipelineDepth = kBandCount - 1;

struct Pipeline {
    Lanes b0[kGroups], b1[kGroups], b2[kGroups], a1[kGroups], a2[kGroups];
    Lanes x1[kGroups], x2[kGroups], y1[kGroups], y2[kGroups];
};

Lanes gatherField(const BandSections& sections, int group, float BandSection::*field) {
    const int band = 2 * group;
    return Lanes{sections[band].*field, sections[kBandCount + band].*field,
                 sections[band + 1].*field, sections[kBandCount + band + 1].*field};
}

void scatterField(BandSections& sections, int group, float BandSection::*field, Lanes value) {
    const int band = 2 * group;
    sections[band].*field = value[0];
    sections[kBandCount + band].*field = value[1];
    sections[band + 1].*field = value[2];
    sections[kBandCount + band + 1].*field = value[3];
}

Pipeline loadPipeline(const BandSections& sections) {
    Pipeline p;
    for (int g = 0; g < kGroups; ++g) {
        p.b0[g] = gatherField(sections, g, &BandSection::b0);
        p.b1[g] = gatherField(sections, g, &BandSection::b1);
        p.b2[g] = gatherField(sections, g, &BandSection::b2);
        p.a1[g] = gatherField(sections, g, &BandSection::a1);
        p.a2[g] = gatherField(sections, g, &BandSection::a2);
        p.x1[g] = gatherField(sections, g, &BandSection::x1);
        p.x2[g] = gatherField(sections, g, &BandSection::x2);
        p.y1[g] = gatherField(sections, g, &BandSection::y1);
        p.y2[g] = gatherField(sections, g, &BandSection::y2);
    }
    return p;
}

void storeState(BandSections& sections, const Pipeline& p) {
    for (int g = 0; g < kGroups; ++g) {
        scatterField(sections, g, &BandSection::x1, p.x1[g]);
        scatterField(sections, g, &BandSection::x2, p.x2[g]);
        scatterField(sections, g, &BandSection::y1, p.y1[g]);
        scatterField(sections, g, &BandSection::y2, p.y2[g]);
    }
}

// One pipeline step. Filters whose sample lies outside the block (while the
// pipeline fills and drains) keep their state when `masked` is set.
template <bool kMasked>
inline Lanes step(Pipeline& p, float inLeft, float inRight, const LaneMask* active) {
    Lanes x[kGroups];
    x[0] = __builtin_shufflevector(Lanes{inLeft, inRight, 0, 0}, p.y1[0], 0, 1, 4, 5);
#pragma GCC unroll kGroups
    for (int g = 1; g < kGroups; ++g) {
        x[g] = __builtin_shufflevector(p.y1[g - 1], p.y1[g], 2, 3, 4, 5);
    }
#pragma GCC unroll kGroups
    for (int g = 0; g < kGroups; ++g) {
        const Lanes y = p.b0[g] * x[g] + p.b1[g] * p.x1[g] + p.b2[g] * p.x2[g] - p.a1[g] * p.y1[g] -
                        p.a2[g] * p.y2[g];
        if constexpr (kMasked) {
            p.x2[g] = active[g] ? p.x1[g] : p.x2[g];
            p.x1[g] = active[g] ? x[g] : p.x1[g];
            p.y2[g] = active[g] ? p.y1[g] : p.y2[g];
            p.y1[g] = active[g] ? y : p.y1[g];
        } else {
            p.x2[g] = p.x1[g];
            p.x1[g] = x[g];
            p.y2[g] = p.y1[g];
            p.y1[g] = y;
        }
    }
    return p.y1[kGroups - 1];
}

void maskedStep(Pipeline& p, float* left, float* right, int64_t t, int64_t frames) {
    LaneMask active[kGroups];
    for (int g = 0; g < kGroups; ++g) {
        const LaneMask band{2 * g, 2 * g, 2 * g + 1, 2 * g + 1};
        const LaneMask sample = static_cast<int32_t>(t) - band;
        active[g] = (sample >= 0) & (sample < static_cast<int32_t>(frames));
    }
    const bool hasInput = t < frames;
    const Lanes last = step<true>(p, hasInput ? left[t] : 0.0f, hasInput ? right[t] : 0.0f, active);
    const int64_t out = t - kPipelineDepth;
    if (out >= 0 && out < frames) {
        left[out] = last[2];
        right[out] = last[3];
    }
}

}  // namespace

void filterTenBands(BandSections& sections, float* left, float* right, uint32_t frames) {
    Pipeline p = loadPipeline(sections);
    const int64_t n = frames;
    const int64_t steps = n + kPipelineDepth;
    const int64_t fullFrom = kPipelineDepth < steps ? kPipelineDepth : steps;
    const int64_t fullTo = n > fullFrom ? n : fullFrom;
    for (int64_t t = 0; t < fullFrom; ++t) {
        maskedStep(p, left, right, t, n);
    }
    // Output lands kPipelineDepth samples behind the input, so the block can
    // be filtered in place.
    for (int64_t t = fullFrom; t < fullTo; ++t) {
        const Lanes last = step<false>(p, left[t], right[t], nullptr);
        left[t - kPipelineDepth] = last[2];
        right[t - kPipelineDepth] = last[3];
    }
    for (int64_t t = fullTo; t < steps; ++t) {
        maskedStep(p, left, right, t, n);
    }
    storeState(sections, p);
}

}  // namespace tunebox
