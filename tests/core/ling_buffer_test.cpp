#include "core/ling_buffer.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "core/heap.h"
#include "support/log_records.h"

namespace tunebox {
namespace {

std::vector<uint8_t> bytesFrom(uint8_t first, std::size_t count) {
    std::vector<uint8_t> bytes(count);
    std::iota(bytes.begin(), bytes.end(), first);
    return bytes;
}

TEST(LingBuffer, RingOfNSlotsHoldsNMinusOneBlocksAndRefusesTheNextUnchanged) {
    for (const int32_t slots : {1, 2, 3, 30}) {
        LingBuffer ring;
        ASSERT_EQ(ring.allocate(16, slots, "unused"), 1);
        ASSERT_EQ(ring.slotCount(), slots);
        const auto block = bytesFrom(1, 16);
        for (int32_t i = 0; i < slots - 1; ++i) {
            ASSERT_EQ(ring.put(block.data(), 16, 0), 1) << slots;
        }
        const uint32_t write = ring.writeIndex();
        EXPECT_EQ(ring.put(block.data(), 16, 1), 0) << slots;
        EXPECT_EQ(ring.writeIndex(), write);
        EXPECT_EQ(ring.readIndex(), 0u);
    }
}

TEST(LingBuffer, NeverAllocatedRingRefusesEveryPutAndEmptyRingsHaveNoBytes) {
    LingBuffer never;
    const uint8_t byte = 7;
    EXPECT_EQ(never.put(&byte, 1, 0), 0);
    EXPECT_EQ(never.put(&byte, 0, 1), 0);
    LingSlot* slot = nullptr;
    EXPECT_EQ(never.get(slot), 0);
    for (const int32_t slots : {0, 1, 2, 30}) {
        LingBuffer ring;
        ASSERT_EQ(ring.allocate(8, slots, "unused"), 1);
        for (const uint32_t count : {0u, 1u, 1000u}) {
            EXPECT_EQ(ring.hasBytes(count), 0) << slots << " " << count;
        }
    }
}

TEST(LingBuffer, GetHandsOutTheSlotInPlaceAndWrapsAtTheSlotCount) {
    LingBuffer ring;
    ASSERT_EQ(ring.allocate(8, 3, "unused"), 1);
    for (uint8_t round = 0; round < 5; ++round) {
        const auto block = bytesFrom(round, 5);
        ASSERT_EQ(ring.put(block.data(), 5, round == 4), 1);
        LingSlot* slot = nullptr;
        ASSERT_EQ(ring.get(slot), 1);
        EXPECT_EQ(slot, &ring.ling[round % 3]);
        EXPECT_EQ(slot->length, 5u);
        EXPECT_EQ(slot->endFlag, round == 4 ? 1u : 0u);
        EXPECT_EQ(std::vector<uint8_t>(slot->buf.get(), slot->buf.get() + 5), block);
        EXPECT_EQ(ring.get(slot), 0);
    }
}

TEST(LingBuffer, ByteReadOfEverythingQueuedEmptiesTheRingWithTheLastFlag) {
    LingBuffer ring;
    ASSERT_EQ(ring.allocate(10, 30, "unused"), 1);
    const auto all = bytesFrom(0, 24);
    ASSERT_EQ(ring.put(all.data(), 10, 0), 1);
    ASSERT_EQ(ring.put(all.data() + 10, 4, 0), 1);
    ASSERT_EQ(ring.put(all.data() + 14, 10, 1), 1);
    EXPECT_EQ(ring.hasBytes(24), 1);
    EXPECT_EQ(ring.hasBytes(25), 0);

    std::vector<uint8_t> out(24);
    uint32_t delivered = 0;
    uint32_t endFlag = 9;
    EXPECT_EQ(ring.readBytes(out.data(), 25, delivered, endFlag), 0);
    EXPECT_EQ(endFlag, 9u);  // a refused read touches nothing
    ASSERT_EQ(ring.readBytes(out.data(), 24, delivered, endFlag), 1);
    EXPECT_EQ(delivered, 24u);
    EXPECT_EQ(endFlag, 1u);
    EXPECT_EQ(out, all);
    EXPECT_EQ(ring.readIndex(), ring.writeIndex());
}

TEST(LingBuffer, ByteReadEndingInsideASlotKeepsItsTailAndFlagForLater) {
    LingBuffer ring;
    ASSERT_EQ(ring.allocate(10, 4, "unused"), 1);
    const auto all = bytesFrom(100, 16);
    ASSERT_EQ(ring.put(all.data(), 6, 0), 1);
    ASSERT_EQ(ring.put(all.data() + 6, 10, 1), 1);

    std::vector<uint8_t> out(16);
    uint32_t delivered = 0;
    uint32_t endFlag = 0;
    ASSERT_EQ(ring.readBytes(out.data(), 9, delivered, endFlag), 1);
    EXPECT_EQ(endFlag, 0u);
    EXPECT_EQ(ring.readIndex(), 1u);
    EXPECT_EQ(ring.ling[1].length, 7u);
    EXPECT_EQ(ring.ling[1].buf[0], all[9]);  // the tail now starts the buffer

    ASSERT_EQ(ring.readBytes(out.data() + 9, 0, delivered, endFlag), 1);
    EXPECT_EQ(ring.readIndex(), 1u);  // nothing taken
    ASSERT_EQ(ring.readBytes(out.data() + 9, 6, delivered, endFlag), 1);
    EXPECT_EQ(endFlag, 0u);
    ASSERT_EQ(ring.readBytes(out.data() + 15, 1, delivered, endFlag), 1);
    EXPECT_EQ(endFlag, 1u);
    EXPECT_EQ(out, all);
    EXPECT_EQ(ring.hasBytes(0), 0);
}

TEST(LingBuffer, PutLongerThanASlotIsCutToTheSlot) {
    LingBuffer ring;
    ASSERT_EQ(ring.allocate(4, 2, "unused"), 1);
    const auto block = bytesFrom(1, 9);
    ASSERT_EQ(ring.put(block.data(), 9, 0), 1);
    EXPECT_EQ(ring.ling[0].length, 4u);
}

TEST(MixBuf, GetsThreeSlotsMoreThanAskedUpToThirty) {
    LingBuffer mixBuf;
    const std::pair<int32_t, int32_t> cases[] = {{3, 6}, {26, 29}, {27, 30}, {100, 30}, {-5, 0}};
    for (const auto& [requested, expected] : cases) {
        ASSERT_EQ(allocateMixBuf(mixBuf, 32, requested), 1);
        EXPECT_EQ(mixBuf.slotCount(), expected) << requested;
    }
}

TEST(LingBufferAllocation, ReallocationFreesThePreviousBlocksAndResetsIndices) {
    LingBuffer ring;
    ASSERT_EQ(ring.allocate(8, 5, "unused"), 1);
    const uint8_t byte = 1;
    ASSERT_EQ(ring.put(&byte, 1, 0), 1);
    ASSERT_EQ(ring.allocate(8, 2, "unused"), 1);
    EXPECT_EQ(ring.writeIndex(), 0u);
    EXPECT_EQ(ring.slotCount(), 2);
    EXPECT_EQ(ring.ling[2].buf, nullptr);
    EXPECT_EQ(ring.ling[0].length, 0u);
}

TEST(LingBufferAllocation, FailureFreesEverythingAndLogsTheOwnersMessageOnce) {
    test::LogDirectory log;
    LingBuffer mixBuf;
    heapFailAfter(4);
    EXPECT_EQ(allocateMixBuf(mixBuf, 64, 3), 0);
    heapFailAfter(-1);
    EXPECT_EQ(mixBuf.slotCount(), 0);
    for (const LingSlot& slot : mixBuf.ling) {
        EXPECT_EQ(slot.buf, nullptr);
    }
    const uint8_t byte = 1;
    EXPECT_EQ(mixBuf.put(&byte, 1, 0), 0);

    LingBuffer p1Buf;
    heapFailAfter(0);
    EXPECT_EQ(p1Buf.allocate(64, 30, "ﾒﾓﾘ確保失敗:P1Buf.ling[i].buf"), 0);
    heapFailAfter(-1);
    EXPECT_EQ(log.messages(), (std::vector<std::string>{"ﾒﾓﾘ確保失敗:MixBuf.ling[i].whdr.lpData",
                                                        "ﾒﾓﾘ確保失敗:P1Buf.ling[i].buf"}));
}

}  // namespace
}  // namespace tunebox
