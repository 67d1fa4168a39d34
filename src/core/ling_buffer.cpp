#include "core/ling_buffer.h"

#include <algorithm>
#include <cstring>

#include "core/heap.h"

namespace tunebox {

int LingBuffer::allocate(uint32_t slotSize, int32_t slotCount, std::string_view failureMessage) {
    return allocateSlots(slotSize, slotCount, [&](LingSlot& slot, uint32_t size) {
        slot.buf = heapAllocZeroed<uint8_t>(size);
        return slot.buf ? std::string_view{} : failureMessage;
    });
}

int LingBuffer::put(const uint8_t* bytes, uint32_t length, uint32_t endFlag) {
    return putWith([&](LingSlot& slot) { slot.store(bytes, length, endFlag, slotSize()); });
}

int LingBuffer::get(LingSlot*& slot) {
    return takeSlot(slot);
}

int LingBuffer::hasBytes(uint32_t byteCount) const {
    uint64_t queued = 0;
    return anyQueued([&](const LingSlot& slot) {
        queued += slot.length;
        return queued >= byteCount;
    });
}

uint64_t LingBuffer::queuedBytes() const {
    uint64_t queued = 0;
    anyQueued([&](const LingSlot& slot) {
        queued += slot.length;
        return false;
    });
    return queued;
}

int LingBuffer::readBytes(uint8_t* destination, uint32_t byteCount, uint32_t& delivered,
                          uint32_t& endFlag) {
    if (!hasBytes(byteCount)) {
        return 0;
    }
    endFlag = 0;
    uint32_t offset = 0;
    while (offset < byteCount) {
        LingSlot& slot = *readSlot();
        const uint32_t missing = byteCount - offset;
        const uint32_t taken = std::min(slot.length, missing);
        if (taken > 0) {
            std::memcpy(destination + offset, slot.buf.get(), taken);
        }
        offset += taken;
        if (taken == slot.length) {
            endFlag = slot.endFlag;
            advanceRead();
        } else {
            std::memmove(slot.buf.get(), slot.buf.get() + taken, slot.length - taken);
            slot.length -= taken;
            endFlag = 0;
        }
    }
    delivered = byteCount;
    return 1;
}

int allocateMixBuf(LingBuffer& mixBuf, uint32_t slotSize, int32_t requestedCount) {
    const auto slots = static_cast<int32_t>(
        std::min<int64_t>(int64_t{requestedCount} + kMixBufExtraSlots, kLingSlots));
    return mixBuf.allocate(slotSize, slots, "ﾒﾓﾘ確保失敗:MixBuf.ling[i].whdr.lpData");
}

}  // namespace tunebox
