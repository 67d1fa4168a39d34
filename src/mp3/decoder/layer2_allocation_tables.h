#pragma once
// The Layer II bit-allocation tables: for each subband, how many bits its
// allocation takes and which quantiser each allocation names. The table is
// chosen by version, sample rate and the bit rate each channel gets.

#include <cstdint>

#include "mp3/decoder/mpeg_header.h"

namespace tunebox {

// A quantiser: its number of levels, and the bits of one codeword. A
// grouped quantiser (3, 5 or 9 levels) codes three samples in one word.
struct Layer2Quantizer {
    int levels = 0;
    int codewordBits = 0;
    bool grouped = false;
};

// A subband's allocation: `bits` wide, value v > 0 naming quantizers[v - 1].
struct Layer2SubbandAllocation {
    int bits = 0;
    const Layer2Quantizer* quantizers = nullptr;
};

struct Layer2AllocationTable {
    int subbands = 0;  // subbands above this carry nothing
    const Layer2SubbandAllocation* allocation = nullptr;
};

// The table of a frame; bit-rate index 0 (free format) reads as the
// highest rates do.
const Layer2AllocationTable& layer2AllocationTable(const MpegHeader& header);

}  // namespace tunebox
