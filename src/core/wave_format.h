#pragma once
// The 18-byte wave format record shared by files, devices and converters,
// and the one native format every engine works in.

#include <cstddef>
#include <cstdint>
#include <span>

namespace tunebox {

inline constexpr uint16_t kFormatPcm = 1;
inline constexpr uint16_t kFormatALaw = 6;
inline constexpr uint16_t kFormatMuLaw = 7;
inline constexpr uint16_t kFormatMpegLayer3 = 0x55;

struct WaveFormat {
    uint16_t formatTag = 0;
    uint16_t channels = 0;
    uint32_t samplesPerSec = 0;
    uint32_t avgBytesPerSec = 0;
    uint16_t blockAlign = 0;
    uint16_t bitsPerSample = 0;
    uint16_t extraSize = 0;
};

inline constexpr std::size_t kWaveFormatBytes = 18;

// The record as files and converters hold it: 18 bytes, little-endian.
// A span shorter than 18 bytes parses as an empty record and is not written.
WaveFormat parseWaveFormat(std::span<const uint8_t> record);
void storeWaveFormat(const WaveFormat& format, std::span<uint8_t> record);

// Native PCM geometry.
inline constexpr uint32_t kNativeSampleRate = 44100;
inline constexpr uint32_t kNativeFrameBytes = 4;
inline constexpr uint32_t kNativeBytesPerSecond = kNativeSampleRate * kNativeFrameBytes;

inline constexpr WaveFormat kNativeFormat{kFormatPcm, 2, kNativeSampleRate, kNativeBytesPerSecond,
                                          kNativeFrameBytes, 16, 0};

// Two records describe the same samples when every field but the extra size
// agrees.
constexpr bool sameFormat(const WaveFormat& a, const WaveFormat& b) {
    return a.formatTag == b.formatTag && a.channels == b.channels &&
           a.samplesPerSec == b.samplesPerSec && a.avgBytesPerSec == b.avgBytesPerSec &&
           a.blockAlign == b.blockAlign && a.bitsPerSample == b.bitsPerSample;
}

// One CD sector: 1/75 second of native PCM. Buffer sizes and the clock use it.
inline constexpr uint32_t kSectorBytes = 2352;
inline constexpr uint32_t kSectorsPerSecond = 75;
// The engines' block: 13 x 3 sectors, handed out 3 at a time.
inline constexpr uint32_t kEngineBlockBytes = 13 * 3 * kSectorBytes;  // 91,728
inline constexpr uint32_t kEngineBlockCount = 3;

}  // namespace tunebox
