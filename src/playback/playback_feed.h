#pragma once
// What the capture engine reads from the accompaniment player during a take:
// the copies of the blocks it played, and how far its output device has
// played them, to pair with the input device's position.

#include <cstdint>

#include "core/ling_buffer.h"

namespace tunebox {

class PlaybackFeed {
  public:
    // Taken with get() on the capture engine's thread.
    virtual LingBuffer& mixBuf() = 0;
    // Bytes the output device has played in the current run; 0 without one.
    virtual uint32_t devicePosition() = 0;

  protected:
    ~PlaybackFeed() = default;
};

}  // namespace tunebox
