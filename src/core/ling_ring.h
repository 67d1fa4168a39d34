#pragma once
// The index discipline shared by every sample ring, whatever its slot kind.
//
// One producer thread and one consumer thread: the write index is stored only
// by the producer, the read index only by the consumer. One slot always stays
// empty, so full and empty are told apart from the two indices alone, and a
// slot handed out by a get is not reached by the producer before the next get.
// Release stores publish a slot's contents (producer) or its hand-back
// (consumer); the other side's acquire load makes them visible.
//
// Allocation and release are not part of the flow: they run while neither
// side uses the ring.

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <string_view>

#include "core/diagnostic_log.h"

namespace tunebox {

inline constexpr int32_t kLingSlots = 30;

template <class Slot>
class LingRing {
  public:
    std::array<Slot, kLingSlots> ling{};

    LingRing() = default;
    LingRing(const LingRing&) = delete;
    LingRing& operator=(const LingRing&) = delete;

    uint32_t writeIndex() const { return writeIndex_.load(std::memory_order_acquire); }
    uint32_t readIndex() const { return readIndex_.load(std::memory_order_acquire); }
    int32_t slotCount() const { return slotCount_; }
    uint32_t slotSize() const { return slotSize_; }

    // Frees every slot block and returns the ring to its never-allocated
    // state, in which every put is refused.
    void release() {
        for (Slot& slot : ling) {
            slot = Slot{};
        }
        writeIndex_.store(0, std::memory_order_relaxed);
        readIndex_.store(0, std::memory_order_relaxed);
        slotCount_ = 0;
        slotSize_ = 0;
    }

  protected:
    ~LingRing() = default;

    // `allocateSlot(slot, slotSize)` gives the blocks to one slot and answers
    // an empty text, or the message that names the block it could not get.
    template <class AllocateSlot>
    int allocateSlots(uint32_t slotSize, int32_t slotCount, AllocateSlot allocateSlot) {
        release();
        slotSize_ = slotSize;
        const int32_t wanted = std::clamp(slotCount, 0, kLingSlots);
        for (int32_t i = 0; i < wanted; ++i) {
            const std::string_view failure = allocateSlot(ling[i], slotSize);
            if (!failure.empty()) {
                release();
                logAlways(failure);
                return 0;
            }
            ++slotCount_;
        }
        return 1;
    }

    uint32_t next(uint32_t index) const {
        return index + 1 < static_cast<uint32_t>(slotCount_) ? index + 1 : 0;
    }

    // Producer side: `fill(slot)` runs only when the ring has room.
    template <class Fill>
    int putWith(Fill&& fill) {
        const uint32_t write = writeIndex_.load(std::memory_order_relaxed);
        const uint32_t following = next(write);
        if (following == readIndex_.load(std::memory_order_acquire)) {
            return 0;
        }
        fill(ling[write]);
        writeIndex_.store(following, std::memory_order_release);
        return 1;
    }

    // Consumer side: the slot at the read index, or null when empty.
    Slot* readSlot() {
        const uint32_t read = readIndex_.load(std::memory_order_relaxed);
        return read == writeIndex_.load(std::memory_order_acquire) ? nullptr : &ling[read];
    }

    void advanceRead() {
        readIndex_.store(next(readIndex_.load(std::memory_order_relaxed)),
                         std::memory_order_release);
    }

    // Consumer side: calls `visit(slot)` for each queued slot from the read
    // index until it answers true or the write index is reached.
    template <class Visit>
    bool anyQueued(Visit&& visit) const {
        const uint32_t write = writeIndex_.load(std::memory_order_acquire);
        for (uint32_t i = readIndex_.load(std::memory_order_relaxed); i != write; i = next(i)) {
            if (visit(ling[i])) {
                return true;
            }
        }
        return false;
    }

    int takeSlot(Slot*& slot) {
        slot = readSlot();
        if (slot == nullptr) {
            return 0;
        }
        advanceRead();
        return 1;
    }

  private:
    std::atomic<uint32_t> writeIndex_{0};
    std::atomic<uint32_t> readIndex_{0};
    int32_t slotCount_ = 0;
    uint32_t slotSize_ = 0;
};

}  // namespace tunebox
