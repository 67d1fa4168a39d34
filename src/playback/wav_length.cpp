#include "playback/wav_length.h"

#include <cstdio>

#include "core/wave_format.h"
#include "playback/source_opener.h"

namespace tunebox {

int wavGetLength(const std::string& path, uint32_t& length) {
    const SourceOpening opening = wavOpenSource(path, SourceOptions{});
    length = opening.source ? opening.source->length() : 0;
    return opening.source ? 1 : 0;
}

int wavFormatLength(const std::string& path, std::string& text) {
    uint32_t length = 0;
    if (wavGetLength(path, length) != 1) {
        return 0;
    }
    text = formatSectorTime(length);
    return 1;
}

double convertedNativeBytes(uint32_t dataSize, uint32_t avgBytesPerSec) {
    const double seconds = static_cast<double>(dataSize) / avgBytesPerSec;
    return seconds * kNativeBytesPerSecond + 0.5;
}

std::string formatSectorTime(uint32_t bytes) {
    constexpr uint32_t kSectorsPerMinute = 60 * kSectorsPerSecond;
    const uint32_t frames = bytes / kSectorBytes;
    const uint32_t minutes = frames / kSectorsPerMinute;
    const uint32_t seconds = (frames - minutes * kSectorsPerMinute) / kSectorsPerSecond;
    char text[32];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", static_cast<int>(minutes),
                  static_cast<int>(seconds), static_cast<int>(frames % kSectorsPerSecond));
    return text;
}

}  // namespace tunebox
