#include "mp3/decoder/gapless_trim.h"

#include <algorithm>

namespace tunebox {

GaplessTrim::GaplessTrim(const XingTag& tag, uint32_t samplesPerFrame)
    : active_(tag.frames != 0),
      begin_(uint64_t{tag.encoderDelay} + kDecoderDelay),
      end_(uint64_t{tag.frames} * samplesPerFrame + kDecoderDelay -
           std::min<uint64_t>(tag.encoderPadding, uint64_t{tag.frames} * samplesPerFrame)) {}

KeptSamples GaplessTrim::take(uint32_t samples) {
    const uint64_t start = position_;
    position_ += samples;
    if (!active_) {
        return {0, samples};
    }
    const uint64_t first = std::clamp(begin_, start, position_);
    const uint64_t last = std::clamp(end_, first, position_);
    return {static_cast<uint32_t>(first - start), static_cast<uint32_t>(last - first)};
}

}  // namespace tunebox
