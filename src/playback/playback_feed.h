#pragma once
// What the capture engine reads from the accompaniment player during a take:
// the copies of the blocks it played, how far its output device has played
// them, to pair with the input device's position, and how the key and tempo
// were moved on the way.

#include <cstdint>

#include "core/ling_buffer.h"
#include "platform/output_stalls.h"
#include "playback/key_tempo_change.h"

namespace tunebox {

class PlaybackFeed {
  public:
    // Taken with get() on the capture engine's thread.
    virtual LingBuffer& mixBuf() = 0;
    // Bytes the output device has played in the current run; 0 without one.
    virtual uint32_t devicePosition() = 0;
    // The output device's stalls in the current run (see OutputDevice).
    virtual OutputStalls deviceStalls(uint32_t first) = 0;
    // The changes of key and tempo applied since the accompaniment opened.
    virtual KeyTempoChanges keyTempoChanges() = 0;

  protected:
    ~PlaybackFeed() = default;
};

}  // namespace tunebox
