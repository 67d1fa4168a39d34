#pragma once
// The Layer I bit allocation: four bits in every subband, at every rate.

#include "mp3/decoder/subband_allocation.h"

namespace tunebox {

const AllocationTable& layer1AllocationTable();

}  // namespace tunebox
