#include "core/heap.h"

#include <gtest/gtest.h>

namespace tunebox {
namespace {

TEST(Heap, BlocksAreZeroFilledAndTheHookFailsExactlyTheNthAllocation) {
    auto block = heapAllocZeroed<float>(1000);
    ASSERT_NE(block, nullptr);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(block[i], 0.0f);
    }

    heapFailAfter(2);
    EXPECT_NE(heapAllocZeroed<char>(8), nullptr);
    EXPECT_NE(heapAllocZeroed<char>(8), nullptr);
    EXPECT_EQ(heapAllocZeroed<char>(8), nullptr);
    EXPECT_NE(heapAllocZeroed<char>(8), nullptr);  // only one failure is injected
    heapFailAfter(-1);
}

}  // namespace
}  // namespace tunebox
