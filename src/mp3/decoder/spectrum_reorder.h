#pragma once
// Short-block reordering and alias reduction: from the coded line order to
// the order the hybrid filter bank expects, 18 lines per subband.

#include "mp3/decoder/layer3_side_info.h"
#include "mp3/decoder/requantizer.h"
#include "mp3/decoder/scale_factor_bands.h"

namespace tunebox {

// Short bands are coded band by band, each window's lines together; the
// filter bank wants each frequency's three windows side by side.
void reorderShortBlocks(const GranuleChannelInfo& info, const ScaleFactorBands& bands,
                        Spectrum& spectrum);

// Butterflies across each subband boundary of the long-block part, below
// `subbands` (the boundaries above it join lines that are all zero).
void reduceAliasing(const GranuleChannelInfo& info, int subbands, Spectrum& spectrum);

// How many subbands can hold a non-zero line once the lines from `lineEnd`
// up are zero, counting what alias reduction spreads across a boundary.
int subbandsInUse(int lineEnd);

}  // namespace tunebox
