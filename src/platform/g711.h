#pragma once
// G.711 companded samples (A-law and µ-law) expanded to 16-bit linear PCM.

#include <cstdint>

namespace tunebox {

int16_t expandALaw(uint8_t code);
int16_t expandMuLaw(uint8_t code);

}  // namespace tunebox
