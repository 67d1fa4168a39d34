#pragma once
// The play-range block: byte positions in the source that fade the sound in
// and out and bound the part that is heard at all.

#include <array>
#include <cstdint>

namespace tunebox {

inline constexpr int kPlayRangeWords = 12;
using PlayRange = std::array<uint32_t, kPlayRangeWords>;

enum PlayRangeWord : int {
    kRangeStart = 0,
    kFadeInStart = 1,
    kFadeInEnd = 2,
    kFadeOutEnd = 3,
    kFadeOutStart = 4,
    kBlockPosition = 5,  // source byte position of the block being processed
    kRangeEnd = 6,
    kEnvelopeEnable = 7,
};

struct EnvelopeGain {
    float gain;
    bool flat;  // inside the fully open part: leave the samples alone
};

// Envelope gain at source byte position `position`. The exact fade
// boundaries fall through every strict comparison and are silent.
EnvelopeGain envelopeGain(const PlayRange& range, uint32_t position);

}  // namespace tunebox
