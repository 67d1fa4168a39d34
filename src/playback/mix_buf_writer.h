#pragma once
// Puts a copy of every block the player fills into the MixBuf ring, from
// which the capture engine mixes the accompaniment that was heard.

#include "core/ling_buffer.h"
#include "playback/block_observer.h"

namespace tunebox {

class MixBufWriter final : public BlockObserver {
  public:
    // Allocate it (allocateMixBuf with the player's buffer size and count)
    // before the player fills; a ring that was never allocated refuses every
    // block, and each refusal is logged.
    LingBuffer& mixBuf() { return mixBuf_; }

    void onBlock(const uint8_t* bytes, uint32_t count, uint32_t last) override;

  private:
    LingBuffer mixBuf_;
};

}  // namespace tunebox
