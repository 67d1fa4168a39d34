#include "core/wave_format.h"

#include "core/little_endian.h"

namespace tunebox {

WaveFormat parseWaveFormat(std::span<const uint8_t> record) {
    if (record.size() < kWaveFormatBytes) {
        return {};
    }
    const uint8_t* bytes = record.data();
    return {loadLe16(bytes),      loadLe16(bytes + 2),  loadLe32(bytes + 4), loadLe32(bytes + 8),
            loadLe16(bytes + 12), loadLe16(bytes + 14), loadLe16(bytes + 16)};
}

void storeWaveFormat(const WaveFormat& format, std::span<uint8_t> record) {
    if (record.size() < kWaveFormatBytes) {
        return;
    }
    uint8_t* bytes = record.data();
    storeLe16(bytes, format.formatTag);
    storeLe16(bytes + 2, format.channels);
    storeLe32(bytes + 4, format.samplesPerSec);
    storeLe32(bytes + 8, format.avgBytesPerSec);
    storeLe16(bytes + 12, format.blockAlign);
    storeLe16(bytes + 14, format.bitsPerSample);
    storeLe16(bytes + 16, format.extraSize);
}

}  // namespace tunebox
