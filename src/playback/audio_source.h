#pragma once
// The decoder source behind every accompaniment: what the opener learnt about
// the file and how its bytes become native PCM. The caller owns it; every
// open starts from a reset record.

#include <array>
#include <cstdint>

#include "platform/wave_format.h"

namespace tunebox {

inline constexpr std::size_t kSourceFormatBytes = 32;

struct AudioSource {
    WaveFormat outputFormat;  // the file's own format record
    // The whole "fmt " chunk, kept for the converter (conversion only).
    std::array<uint8_t, kSourceFormatBytes> sourceFormat{};
    uint32_t conversionFlag = 0;  // 0: the data bytes are native PCM as they stand
    uint32_t ownDecoderFlag = 0;  // 1: try the built-in decoder first
    uint32_t sourceDataSize = 0;  // source bytes of the data (conversion only)
    uint32_t outputLength = 0;    // native-PCM bytes
    uint32_t sourceBytesBound = 0;
};

// Run before every open, so that nothing of a previous file survives.
inline void audioSourceReset(AudioSource& source) {
    source = AudioSource{};
}

}  // namespace tunebox
