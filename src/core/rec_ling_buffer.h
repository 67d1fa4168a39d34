#pragma once
// The capture ring (RecBuf): blocks returned by the input device wait here for
// the capture pump.

#include <atomic>
#include <cstdint>

#include "core/ling_ring.h"
#include "core/rec_ling_slot.h"
#include "core/wave_header.h"

namespace tunebox {

class RecLingBuffer : public LingRing<RecLingSlot> {
  public:
    // Gives `slotCount` slots (at most 30) a device block and a pump block,
    // each zero-filled and `slotSize` long, and clears the filled counter. On
    // failure everything is freed, the missing block is logged and 0 returned.
    int allocate(uint32_t slotSize, int32_t slotCount);

    // Copies `length` bytes of the header's data into the write slot and
    // remembers the header. A full ring drops the block and counts it lost.
    int put(WaveHeader* header, uint32_t length, uint32_t endFlag);

    // Hands out the oldest block in place; it stays valid until the next get.
    int get(RecLingSlot*& slot);

    int32_t filledCount() const { return filled_.load(std::memory_order_acquire); }
    void setFilledCount(int32_t count) { filled_.store(count, std::memory_order_release); }

  private:
    std::atomic<int32_t> filled_{0};
};

// Capture blocks dropped by every RecBuf since the program started.
uint32_t lostCaptureBlocks();

}  // namespace tunebox
