#pragma once
// The sample ring used between the player, the capture pump and the mixer
// (MixBuf, P1Buf, P2Buf): blocks go in whole and come out whole or by bytes.

#include <cstdint>
#include <string_view>

#include "core/ling_ring.h"
#include "core/ling_slot.h"

namespace tunebox {

class LingBuffer : public LingRing<LingSlot> {
  public:
    // Frees what a previous allocation left, then gives `slotCount` slots
    // (at most 30) a zero-filled block each. On failure everything is freed,
    // `failureMessage` goes to the log and 0 is returned.
    int allocate(uint32_t slotSize, int32_t slotCount, std::string_view failureMessage);

    // 0 when full (the ring is left as it was), else the block is queued.
    int put(const uint8_t* bytes, uint32_t length, uint32_t endFlag);

    // Hands out the oldest block in place; it stays valid until the next get.
    int get(LingSlot*& slot);

    // 1 once the queued blocks hold at least `byteCount` bytes; 0 for an
    // empty ring whatever the count.
    int hasBytes(uint32_t byteCount) const;
    // What the queued blocks hold, in bytes.
    uint64_t queuedBytes() const;

    // Copies exactly `byteCount` bytes out of the queued blocks, or does
    // nothing and answers 0 when fewer are queued. A block read only in part
    // keeps its tail (moved to the front of its buffer) for the next read and
    // reports end flag 0; its own flag comes out with the read that empties it.
    int readBytes(uint8_t* destination, uint32_t byteCount, uint32_t& delivered, uint32_t& endFlag);
};

// The player's copy ring has three slots more than the player has buffers, so
// that the capture pump may fall a little behind.
inline constexpr int32_t kMixBufExtraSlots = 3;

int allocateMixBuf(LingBuffer& mixBuf, uint32_t slotSize, int32_t requestedCount);

}  // namespace tunebox
