#pragma once
// What a Layer I or II bit allocation names: for each subband, how many bits
// its allocation takes and the quantiser each allocation value stands for.

namespace tunebox {

// A quantiser: its number of levels, and the bits of one codeword. A
// grouped quantiser (3, 5 or 9 levels) codes three samples in one word.
// A quantiser of no levels marks an allocation value the layer forbids.
struct SubbandQuantizer {
    int levels = 0;
    int codewordBits = 0;
    bool grouped = false;
};

// A subband's allocation: `bits` wide, value v > 0 naming quantizers[v - 1].
struct SubbandAllocation {
    int bits = 0;
    const SubbandQuantizer* quantizers = nullptr;
};

struct AllocationTable {
    int subbands = 0;  // subbands above this carry nothing
    const SubbandAllocation* allocation = nullptr;
};

}  // namespace tunebox
