#pragma once
// A capture ring slot: besides the block handed to the pump it carries the
// slot's own device header (queued on the input device, with a data block of
// the same size) and the header that delivered the block now in `buf`.

#include <cstdint>
#include <memory>

#include "core/ling_slot.h"
#include "core/wave_header.h"

namespace tunebox {

struct RecLingSlot : LingSlot {
    WaveHeader* header = nullptr;  // the header that delivered this block
    WaveHeader whdr;               // whdr.data points into whdrData
    std::unique_ptr<uint8_t[]> whdrData;
};

}  // namespace tunebox
