#include "platform/g711.h"

namespace tunebox {

int16_t expandALaw(uint8_t code) {
    const uint8_t bits = code ^ 0x55;  // even bits are stored inverted
    const int exponent = (bits >> 4) & 0x07;
    const int mantissa = bits & 0x0F;
    const int magnitude =
        exponent == 0 ? (mantissa << 4) + 8 : ((mantissa << 4) + 0x108) << (exponent - 1);
    return static_cast<int16_t>((bits & 0x80) != 0 ? magnitude : -magnitude);
}

int16_t expandMuLaw(uint8_t code) {
    constexpr int kBias = 0x84;
    const uint8_t bits = static_cast<uint8_t>(~code);  // all bits are stored inverted
    const int exponent = (bits >> 4) & 0x07;
    const int mantissa = bits & 0x0F;
    const int magnitude = (((mantissa << 3) + kBias) << exponent) - kBias;
    return static_cast<int16_t>((bits & 0x80) != 0 ? -magnitude : magnitude);
}

}  // namespace tunebox
