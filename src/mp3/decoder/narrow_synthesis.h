#pragma once
// Polyphase synthesis over only the lowest 16 or 8 subbands, for output at
// half or a quarter of the stream's rate: each time slot gives as many
// samples as subbands are synthesised. The filter is the full bank's
// prototype taken at every second or fourth tap, which is the same
// low-pass scaled to the narrower band. Not tuned for speed: the full-rate
// path is the one that plays accompaniments.

#include <array>
#include <cstdint>

#include "mp3/decoder/hybrid_filter_bank.h"

namespace tunebox {

class NarrowSynthesis {
  public:
    static constexpr int kMaxSubbands = 16;

    // Writes 18 x `subbands` clipped 16-bit samples to out[0],
    // out[stride], ...; `subbands` is 16 or 8, the same on every call
    // between resets.
    void synthesize(const SubbandSamples& in, int subbands, int16_t* out, int stride);
    void reset() { history_ = {}; }

  private:
    // The last 16 slots' V vectors (2 x subbands values each), newest first.
    std::array<float, 16 * 2 * kMaxSubbands> history_{};
};

}  // namespace tunebox
