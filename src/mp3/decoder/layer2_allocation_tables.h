#pragma once
// The Layer II bit-allocation tables: for each subband, how many bits its
// allocation takes and which quantiser each allocation names. The table is
// chosen by version, sample rate and the bit rate each channel gets.

#include "mp3/decoder/mpeg_header.h"
#include "mp3/decoder/subband_allocation.h"

namespace tunebox {

// The table of a frame; bit-rate index 0 (free format) reads as the
// highest rates do.
const AllocationTable& layer2AllocationTable(const MpegHeader& header);

}  // namespace tunebox
