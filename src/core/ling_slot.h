#pragma once
// One slot of a sample ring: a block of the ring's slot size and how much of
// it a producer filled.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

namespace tunebox {

struct LingSlot {
    uint32_t endFlag = 0;  // 1 on the last block of a stream
    uint32_t length = 0;   // valid bytes in buf
    std::unique_ptr<uint8_t[]> buf;

    // Copies at most `capacity` bytes: a block larger than the slot would
    // otherwise run past the heap block, so its excess is cut off.
    void store(const uint8_t* bytes, uint32_t byteCount, uint32_t end, uint32_t capacity) {
        const uint32_t kept = std::min(byteCount, capacity);
        if (kept > 0) {
            std::memcpy(buf.get(), bytes, kept);
        }
        endFlag = end;
        length = kept;
    }
};

}  // namespace tunebox
