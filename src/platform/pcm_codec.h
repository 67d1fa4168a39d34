#pragma once
// Linear PCM conversion between channel counts (1, 2), sample widths (8 and
// 16 bits, and G.711 A-law and µ-law in) and rates (libsoxr, high quality).

#include <memory>

#include "platform/codec_manager.h"

namespace tunebox {

bool isPcmFamilyFormat(const WaveFormat& format);

// What a PCM-family source becomes: 16-bit PCM with the source's channels and
// rate, except for the fields `flags` takes from `wanted`. False when those
// fields ask for something this converter cannot produce.
bool pcmSuggest(const WaveFormat& source, const WaveFormat& wanted, uint32_t flags,
                WaveFormat& suggested);

// Null when no resampler can be set up for the pair.
std::unique_ptr<CodecStream> openPcmStream(const WaveFormat& source, const WaveFormat& destination);

}  // namespace tunebox
