// The narrow synthesis of half and quarter rate against its definition,
// evaluated directly in double precision: the matrixing
// V[i] = sum over k of cos((N / 2 + i)(2k + 1) pi / 2N) S[k] for each slot,
// and output j of slot t = sum over rows r of V[j] (even r) or V[N + j]
// (odd r) of slot t - r, weighted by the full window's tap (rN + j) 32 / N.
// Several granules in a row, so that the history carried between calls
// counts as much as the granule's own slots.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <deque>
#include <numbers>
#include <random>
#include <vector>

#include "mp3/decoder/narrow_synthesis.h"
#include "mp3/decoder/synthesis_window.h"

namespace tunebox {
namespace {

class DirectSynthesis {
  public:
    explicit DirectSynthesis(int n) : n_(n), history_(16, std::vector<double>(2 * n, 0.0)) {}

    // One slot's subband samples in, its n output samples out (unrounded).
    std::vector<double> slot(const std::array<float, kSubbands>& samples) {
        std::vector<double> v(2 * n_);
        for (int i = 0; i < 2 * n_; ++i) {
            for (int k = 0; k < n_; ++k) {
                v[i] += std::cos((n_ / 2.0 + i) * (2 * k + 1) * std::numbers::pi / (2.0 * n_)) *
                        samples[k];
            }
        }
        history_.pop_back();
        history_.push_front(v);
        std::vector<double> out(n_);
        const int step = kSubbands / n_;
        for (int j = 0; j < n_; ++j) {
            for (int r = 0; r < 16; ++r) {
                const double tap = synthesisWindow()[(r * n_ + j) * step] * 32768.0;
                out[j] += history_[r][(r & 1) * n_ + j] * tap;
            }
        }
        return out;
    }

  private:
    int n_;
    std::deque<std::vector<double>> history_;  // newest first
};

// Loud enough that rounding and clipping both occur: subband samples up
// to about full scale, and now and then beyond it.
SubbandSamples randomGranule(std::mt19937& random, float peak) {
    std::uniform_real_distribution<float> sample(-peak, peak);
    SubbandSamples granule{};
    for (auto& slot : granule) {
        for (float& value : slot) {
            value = sample(random);
        }
    }
    return granule;
}

TEST(NarrowSynthesis, MatchesItsDefinitionWithinOneLsbAcrossGranules) {
    for (int n : {16, 8}) {
        SCOPED_TRACE(n);
        std::mt19937 random(7 + n);
        NarrowSynthesis narrow;
        DirectSynthesis direct(n);
        int clipped = 0;
        for (int granule = 0; granule < 6; ++granule) {
            const SubbandSamples in = randomGranule(random, granule == 5 ? 2.0f : 0.3f);
            std::vector<int16_t> out(kSlotsPerGranule * n * 2, 0x5555);
            narrow.synthesize(in, n, out.data(), 2);
            for (int slot = 0; slot < kSlotsPerGranule; ++slot) {
                const auto expected = direct.slot(in[slot]);
                for (int j = 0; j < n; ++j) {
                    const double want = std::clamp(expected[j], -32768.0, 32767.0);
                    clipped += want != expected[j];
                    const int got = out[(slot * n + j) * 2];
                    ASSERT_LE(std::abs(got - want), 1.0)
                        << "granule " << granule << " slot " << slot << " output " << j;
                    // The stride leaves the other channel's samples alone.
                    ASSERT_EQ(out[(slot * n + j) * 2 + 1], 0x5555);
                }
            }
        }
        EXPECT_GT(clipped, 0);
    }
}

TEST(NarrowSynthesis, ResetForgetsTheHistory) {
    std::mt19937 random(3);
    NarrowSynthesis used;
    NarrowSynthesis fresh;
    std::vector<int16_t> ignored(kSlotsPerGranule * 16);
    used.synthesize(randomGranule(random, 0.5f), 16, ignored.data(), 1);
    used.reset();
    const SubbandSamples in = randomGranule(random, 0.5f);
    std::vector<int16_t> afterReset(kSlotsPerGranule * 16);
    std::vector<int16_t> fromFresh(kSlotsPerGranule * 16);
    used.synthesize(in, 16, afterReset.data(), 1);
    fresh.synthesize(in, 16, fromFresh.data(), 1);
    EXPECT_EQ(afterReset, fromFresh);
}

}  // namespace
}  // namespace tunebox
