#pragma once
// The hybrid filter bank's second stage run backwards: inverse MDCT of each
// subband's 18 lines (one long or three short transforms), windowing by
// block type, overlap-add with the previous granule, and the frequency
// inversion of odd subbands.

#include <array>

#include "mp3/decoder/layer3_side_info.h"
#include "mp3/decoder/requantizer.h"

namespace tunebox {

inline constexpr int kSubbands = 32;
inline constexpr int kSlotsPerGranule = 18;

// [time slot][subband]: the input of the polyphase synthesis.
using SubbandSamples = std::array<std::array<float, kSubbands>, kSlotsPerGranule>;

class HybridFilterBank {
  public:
    // Lines of subbands from `subbands` up must be zero; their transform
    // is skipped, only their overlap still comes out. Only the lowest
    // `synthesised` subbands (32, 16 or 8, the same on every call between
    // resets) are written to `out` and kept for the next granule: those
    // the synthesis reads.
    void process(const Spectrum& spectrum, const GranuleChannelInfo& info, int subbands,
                 int synthesised, SubbandSamples& out);
    void reset() { overlap_ = {}; }

  private:
    // [time slot][subband], the layout of the output.
    SubbandSamples overlap_{};
};

}  // namespace tunebox
