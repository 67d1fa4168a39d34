#include "session/position_time.h"

#include <cstdio>

#include "core/wave_format.h"

namespace tunebox {
namespace {

constexpr uint32_t kSectorsPerMinute = 60 * kSectorsPerSecond;

}  // namespace

std::string formatPositionTime(uint32_t bytes) {
    const auto sectors = static_cast<uint32_t>(bytes / static_cast<double>(kSectorBytes));
    const uint32_t minutes = sectors / kSectorsPerMinute;
    const uint32_t seconds = (sectors - minutes * kSectorsPerMinute) / kSectorsPerSecond;
    const auto hundredths = static_cast<uint32_t>(
        (sectors % kSectorsPerSecond) * 100 / double(kSectorsPerSecond) + 0.5);
    char text[16];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", static_cast<uint8_t>(minutes),
                  static_cast<uint8_t>(seconds), static_cast<uint8_t>(hundredths));
    return text;
}

uint32_t trackbarToBytes(int value, uint32_t length) {
    return static_cast<uint32_t>(value / double(kTrackbarMax) * length + 0.5);
}

}  // namespace tunebox
