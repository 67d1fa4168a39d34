#pragma once
// Polyphase synthesis over only the lowest 16 or 8 subbands, for output at
// half or a quarter of the stream's rate: each time slot gives as many
// samples as subbands are synthesised. The filter is the full bank's
// prototype taken at every second or fourth tap, which is the same
// low-pass scaled to the narrower band; the matrixing is a 16- or 8-point
// fast DCT.

#include <array>
#include <cstdint>

#include "mp3/decoder/fast_dct32.h"
#include "mp3/decoder/hybrid_filter_bank.h"

namespace tunebox {

class NarrowSynthesis {
  public:
    static constexpr int kMaxSubbands = 16;

    // Writes `slots` x `subbands` clipped 16-bit samples to out[0],
    // out[stride], ...; `subbands` is 16 or 8, the same on every call
    // between resets, and `slots` at most 18 (12 for a Layer I frame).
    void synthesize(const SubbandSamples& in, int subbands, int16_t* out, int stride,
                    int slots = kSlotsPerGranule);
    void reset() {
        lowHalf_ = {};
        highHalf_ = {};
    }

    // Earlier slots the window reaches back to.
    static constexpr int kHistorySlots = 15;
    // [output index][slot], earlier slots first, then the granule's own
    // (padded to whole vector lanes).
    using SlotHistory = std::array<std::array<float, kHistorySlots + kDctLanes>, kMaxSubbands>;

  private:
    template <int N>
    void synthesizeWidth(const SubbandSamples& in, int16_t* out, int stride, int slots);
    template <int N>
    void store(const std::array<DctLanes, kMaxSubbands>& transformed);
    template <int N>
    void window(int16_t* out, int stride, int slots) const;
    void keepHistory(int rows, int slots);

    // The two halves of each slot's V vector (2 x subbands values), kept
    // without their signs: the window's weights carry them.
    SlotHistory lowHalf_{};
    SlotHistory highHalf_{};
};

}  // namespace tunebox
