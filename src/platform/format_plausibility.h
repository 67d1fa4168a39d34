#pragma once
// The one check every opener runs on a source's declared format before it
// trusts it: a format record that no real recording has (a rate of 1 Hz, no
// channels, a block that does not hold its samples) would otherwise make the
// converter run for hours or the length overflow.

#include <cstdint>
#include <string>

#include "core/wave_format.h"

namespace tunebox {

inline constexpr uint32_t kLowestSampleRate = 1000;
inline constexpr uint32_t kHighestSampleRate = 768000;
inline constexpr uint16_t kMostChannels = 8;
// Converted sources grow at most this many times from source bytes to native
// bytes, so that reading never falls far behind the output.
inline constexpr uint32_t kMostGrowth = 64;

// Why `format` cannot be opened, as one phrase naming the field and its
// value ("sample rate 1 Hz is outside 1000-768000 Hz"); empty when it can.
// PCM, A-law and mu-law records are checked in full; for MPEG records, whose
// average field holds a bit rate and whose block is a frame, only the rate
// and the channel count are, and that the byte rate is not 0.
std::string implausibleFormatReason(const WaveFormat& format);

}  // namespace tunebox
