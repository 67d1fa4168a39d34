#include "playback/wave_extensible.h"

#include <algorithm>
#include <array>

#include "core/little_endian.h"
#include "core/wave_format.h"

namespace tunebox {
namespace {

constexpr std::size_t kExtraSizeOffset = 16;
constexpr std::size_t kSubFormatOffset = 24;
constexpr uint16_t kExtensibleExtraBytes = 22;

// The PCM sub-format GUID, 00000001-0000-0010-8000-00AA00389B71, as stored.
constexpr std::array<uint8_t, 16> kPcmSubFormat{0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10, 0x00,
                                                0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

}  // namespace

bool plainPcmFromExtensible(std::span<uint8_t> chunk, std::size_t chunkSize) {
    if (chunkSize < kExtensibleFormatBytes || chunk.size() < kExtensibleFormatBytes ||
        loadLe16(chunk.data()) != kFormatExtensible ||
        loadLe16(chunk.data() + kExtraSizeOffset) < kExtensibleExtraBytes ||
        !std::equal(kPcmSubFormat.begin(), kPcmSubFormat.end(), chunk.begin() + kSubFormatOffset)) {
        return false;
    }
    storeLe16(chunk.data(), kFormatPcm);
    std::fill(chunk.begin() + kExtraSizeOffset, chunk.end(), uint8_t{0});
    return true;
}

}  // namespace tunebox
