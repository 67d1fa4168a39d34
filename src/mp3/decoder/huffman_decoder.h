#pragma once
// Huffman decoding of one granule's spectrum: the big-values pairs in their
// three regions, then the count1 quadruples up to the end of part 2/3.

#include <array>
#include <cstddef>
#include <cstdint>

#include "mp3/decoder/bit_reader.h"
#include "mp3/decoder/layer3_side_info.h"

namespace tunebox {

using QuantizedSpectrum = std::array<int32_t, kGranuleLines>;

// Decodes into `lines` (all 576 written) and returns how many leading lines
// may be non-zero. `part23End` is the bit position where this granule's
// Huffman data ends. Decoding stops once `lineLimit` lines are done (the
// lines above are left zero), as output at a reduced rate never uses them;
// the caller seeks to `part23End` itself.
int decodeHuffmanSpectrum(BitReader& reader, const GranuleChannelInfo& info, std::size_t part23End,
                          int lineLimit, QuantizedSpectrum& lines);

}  // namespace tunebox
