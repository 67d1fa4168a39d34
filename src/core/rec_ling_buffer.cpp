#include "core/rec_ling_buffer.h"

#include <string_view>

#include "core/heap.h"

namespace tunebox {
namespace {

std::atomic<uint32_t> lostBlocks{0};

}  // namespace

int RecLingBuffer::allocate(uint32_t slotSize, int32_t slotCount) {
    filled_.store(0, std::memory_order_relaxed);
    return allocateSlots(slotSize, slotCount, [](RecLingSlot& slot, uint32_t size) {
        slot.whdrData = heapAllocZeroed<uint8_t>(size);
        if (!slot.whdrData) {
            return std::string_view{"ﾒﾓﾘ確保失敗:RecBuf.ling[i].whdr.lpData"};
        }
        slot.whdr.data = slot.whdrData.get();
        slot.buf = heapAllocZeroed<uint8_t>(size);
        return slot.buf ? std::string_view{} : std::string_view{"ﾒﾓﾘ確保失敗:RecBuf.ling[i].buf"};
    });
}

int RecLingBuffer::put(WaveHeader* header, uint32_t length, uint32_t endFlag) {
    const int stored = putWith([&](RecLingSlot& slot) {
        slot.store(header->data, length, endFlag, slotSize());
        slot.header = header;
    });
    if (stored) {
        filled_.fetch_add(1, std::memory_order_acq_rel);
    } else {
        lostBlocks.fetch_add(1, std::memory_order_relaxed);
    }
    return stored;
}

int RecLingBuffer::get(RecLingSlot*& slot) {
    if (!takeSlot(slot)) {
        return 0;
    }
    filled_.fetch_sub(1, std::memory_order_acq_rel);
    return 1;
}

uint32_t lostCaptureBlocks() {
    return lostBlocks.load(std::memory_order_relaxed);
}

}  // namespace tunebox
