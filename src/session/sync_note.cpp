#include "session/sync_note.h"

#include <cstdio>

#include "core/wave_format.h"

namespace tunebox {

std::string outOfSyncNote(uint64_t takeBytes) {
    const uint64_t seconds = takeBytes / kNativeBytesPerSecond;
    char text[48];
    std::snprintf(text, sizeof text, "out of sync from %02llu:%02llu",
                  static_cast<unsigned long long>(seconds / 60),
                  static_cast<unsigned long long>(seconds % 60));
    return text;
}

}  // namespace tunebox
