#pragma once
// The Layer III Huffman code books as the standard lists them: for every
// table the code word and its length for each (x, y) pair, row by row (x is
// the row), and the two count1 books indexed by v*8 + w*4 + x*2 + y.

#include <cstdint>

namespace tunebox {

struct HuffmanCodeBook {
    int dimension = 0;  // x and y both run 0..dimension-1; 0 = no code book
    int linbits = 0;
    const uint16_t* codes = nullptr;
    const uint8_t* lengths = nullptr;
};

inline constexpr int kBigValueTableCount = 32;

// Indexed by table_select; tables 0, 4 and 14 carry no code book.
const HuffmanCodeBook& bigValueCodeBook(int tableSelect);
// count1table_select 0 (table A) or 1 (table B); dimension is 16 quads.
const HuffmanCodeBook& count1CodeBook(int tableSelect);

}  // namespace tunebox
