#include "core/rec_ling_buffer.h"

#include <gtest/gtest.h>

#include <vector>

#include "core/heap.h"
#include "support/log_records.h"

namespace tunebox {
namespace {

TEST(RecLingBuffer, EverySlotGetsADeviceBlockAndAPumpBlockOfSlotSize) {
    RecLingBuffer recBuf;
    ASSERT_EQ(recBuf.allocate(4410, 40), 1);
    EXPECT_EQ(recBuf.slotCount(), 30);
    EXPECT_EQ(recBuf.slotSize(), 4410u);
    for (const RecLingSlot& slot : recBuf.ling) {
        ASSERT_NE(slot.buf, nullptr);
        ASSERT_EQ(slot.whdr.data, slot.whdrData.get());
        ASSERT_NE(slot.whdr.data, nullptr);
        EXPECT_EQ(slot.whdr.data[4409], 0);
        EXPECT_EQ(slot.buf[4409], 0);
    }
    EXPECT_EQ(recBuf.filledCount(), 0);
}

TEST(RecLingBuffer, PutCopiesTheHeadersDataAndAFullRingCountsTheBlockLost) {
    RecLingBuffer recBuf;
    ASSERT_EQ(recBuf.allocate(8, 3), 1);
    WaveHeader& delivering = recBuf.ling[2].whdr;
    for (uint8_t i = 0; i < 8; ++i) {
        delivering.data[i] = static_cast<uint8_t>(0xA0 + i);
    }
    ASSERT_EQ(recBuf.put(&delivering, 8, 0), 1);
    ASSERT_EQ(recBuf.put(&delivering, 8, 1), 1);
    EXPECT_EQ(recBuf.filledCount(), 2);

    const uint32_t lostBefore = lostCaptureBlocks();
    EXPECT_EQ(recBuf.put(&delivering, 8, 0), 0);
    EXPECT_EQ(lostCaptureBlocks(), lostBefore + 1);
    EXPECT_EQ(recBuf.filledCount(), 2);

    RecLingSlot* slot = nullptr;
    ASSERT_EQ(recBuf.get(slot), 1);
    EXPECT_EQ(slot->header, &delivering);
    EXPECT_EQ(slot->buf[7], 0xA7);
    ASSERT_EQ(recBuf.get(slot), 1);
    EXPECT_EQ(slot->endFlag, 1u);
    EXPECT_EQ(recBuf.get(slot), 0);
    EXPECT_EQ(recBuf.filledCount(), 0);
}

TEST(RecLingBuffer, AllocationFailureNamesTheMissingBlockAndFreesEverything) {
    test::LogDirectory log;
    RecLingBuffer recBuf;
    for (const long succeeding : {0L, 1L, 4L, 5L}) {
        heapFailAfter(succeeding);
        EXPECT_EQ(recBuf.allocate(64, 3), 0);
        heapFailAfter(-1);
        EXPECT_EQ(recBuf.slotCount(), 0);
        for (const RecLingSlot& slot : recBuf.ling) {
            EXPECT_EQ(slot.buf, nullptr);
            EXPECT_EQ(slot.whdrData, nullptr);
            EXPECT_EQ(slot.whdr.data, nullptr);
        }
    }
    const std::string device = "ﾒﾓﾘ確保失敗:RecBuf.ling[i].whdr.lpData";
    const std::string pump = "ﾒﾓﾘ確保失敗:RecBuf.ling[i].buf";
    EXPECT_EQ(log.messages(), (std::vector<std::string>{device, pump, device, pump}));
}

}  // namespace
}  // namespace tunebox
