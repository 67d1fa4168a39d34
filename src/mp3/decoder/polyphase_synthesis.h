#pragma once
// Polyphase synthesis filter bank: a run of up to 18 time slots (a Layer III
// granule; 12 for a Layer I frame) of 32 subband samples in, 32 PCM samples
// per slot out, keeping the history of the last 15 slots per channel.

#include <array>
#include <cstdint>

#include "mp3/decoder/fast_dct32.h"
#include "mp3/decoder/hybrid_filter_bank.h"

namespace tunebox {

class PolyphaseSynthesis {
  public:
    // Writes the first `slots` slots' clipped 16-bit samples to out[0],
    // out[stride], ...
    void synthesize(const SubbandSamples& subbands, int16_t* out, int stride,
                    int slots = kSlotsPerGranule);
    void reset();

    // Earlier slots the window reaches back to.
    static constexpr int kHistorySlots = 15;
    // [output index][slot], earlier slots first, then the granule's own
    // (padded to whole vector lanes).
    using SlotHistory = std::array<std::array<float, kHistorySlots + kDctLanes>, 32>;

  private:
    void store(const std::array<DctLanes, 32>& transformed);
    void window(int16_t* out, int stride, int slots) const;
    void keepHistory(int slots);

    // The standard's V vector of each slot, its two halves: V[0..31] and
    // V[32..63].
    SlotHistory lowHalf_{};
    SlotHistory highHalf_{};
};

}  // namespace tunebox
