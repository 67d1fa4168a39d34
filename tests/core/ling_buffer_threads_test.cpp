// One producer thread and one consumer thread on one ring, as the player and
// the capture pump use MixBuf: every block must arrive once, whole, in order.

#include <gtest/gtest.h>

#include <thread>

#include "core/ling_buffer.h"

namespace tunebox {
namespace {

constexpr uint32_t kBlocks = 300000;
constexpr uint32_t kSlotBytes = 64;

uint32_t blockLength(uint32_t block) {
    return 1 + block % kSlotBytes;
}

// The byte at a position of the whole stream, so that misplaced bytes show.
uint8_t streamByte(uint64_t position) {
    return static_cast<uint8_t>((position * 131) >> 3);
}

void produce(LingBuffer& ring) {
    uint8_t block[kSlotBytes];
    uint64_t position = 0;
    for (uint32_t i = 0; i < kBlocks; ++i) {
        const uint32_t length = blockLength(i);
        for (uint32_t k = 0; k < length; ++k) {
            block[k] = streamByte(position + k);
        }
        while (!ring.put(block, length, i + 1 == kBlocks)) {
            std::this_thread::yield();
        }
        position += length;
    }
}

TEST(LingBufferThreads, BlocksArriveWholeAndInOrder) {
    LingBuffer ring;
    ASSERT_EQ(ring.allocate(kSlotBytes, 30, "unused"), 1);
    std::thread producer(produce, std::ref(ring));

    uint64_t position = 0;
    uint32_t mismatches = 0;
    uint32_t received = 0;
    uint32_t lastFlag = 0;
    while (received < kBlocks) {
        LingSlot* slot = nullptr;
        if (!ring.get(slot)) {
            std::this_thread::yield();
            continue;
        }
        mismatches += slot->length != blockLength(received);
        for (uint32_t k = 0; k < slot->length; ++k) {
            mismatches += slot->buf[k] != streamByte(position + k);
        }
        position += slot->length;
        lastFlag = slot->endFlag;
        ++received;
    }
    producer.join();
    EXPECT_EQ(mismatches, 0u);
    EXPECT_EQ(lastFlag, 1u);
    EXPECT_EQ(ring.hasBytes(0), 0);
}

}  // namespace
}  // namespace tunebox
