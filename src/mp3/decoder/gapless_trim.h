#pragma once
// Cuts a decoded stream to the music the encoder was given: the samples its
// tag frame names as encoder delay and padding go, and so does the delay of
// the decoder's own filter banks (529 samples), so a file decodes to exactly
// the length and start of its source, as gapless players give it.

#include <cstdint>

#include "mp3/decoder/xing_tag.h"

namespace tunebox {

// The part of one frame's output that is kept, in samples per channel.
struct KeptSamples {
    uint32_t first = 0;
    uint32_t count = 0;
};

class GaplessTrim {
  public:
    // The filter banks' delay: a sample leaves the synthesis this many
    // samples after it entered the encoder's analysis.
    static constexpr uint32_t kDecoderDelay = 529;

    // Keeps everything.
    GaplessTrim() = default;
    // Trims by `tag`; a tag without a frame count keeps everything.
    GaplessTrim(const XingTag& tag, uint32_t samplesPerFrame);

    // The next `samples` of the stream (one frame's output): which of them
    // belong to the music. Advances the stream position.
    KeptSamples take(uint32_t samples);

  private:
    bool active_ = false;
    uint64_t begin_ = 0;
    uint64_t end_ = 0;
    uint64_t position_ = 0;
};

}  // namespace tunebox
