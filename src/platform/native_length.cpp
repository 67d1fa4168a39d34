#include "platform/native_length.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "core/wave_format.h"

namespace tunebox {
namespace {

// Hours, minutes and seconds: "6:45:47".
std::string clockText(uint64_t seconds) {
    char text[48];
    std::snprintf(text, sizeof text, "%llu:%02u:%02u",
                  static_cast<unsigned long long>(seconds / 3600),
                  static_cast<unsigned>(seconds / 60 % 60), static_cast<unsigned>(seconds % 60));
    return text;
}

}  // namespace

std::optional<uint32_t> fittingNativeLength(double nativeBytes) {
    constexpr double kFirstTooLong = double{kLongestNativeLength} + 1.0;
    if (!(nativeBytes >= 0.0 && nativeBytes < kFirstTooLong)) {
        return std::nullopt;
    }
    return static_cast<uint32_t>(nativeBytes);
}

// A refused source's time is rounded up and the limit's down, so that the
// two never read alike. The last millisecond is let go: lengths carry half a
// byte of rounding.
std::string tooLongReason(double nativeBytes) {
    // Far beyond any real file, yet small enough to convert safely.
    constexpr double kLongestShown = 1e12;
    const double seconds = nativeBytes / kNativeBytesPerSecond - 0.001;
    const double shown = seconds >= 0.0 ? std::ceil(std::min(seconds, kLongestShown)) : 0.0;
    return "lasts " + clockText(static_cast<uint64_t>(shown)) + ", longer than the " +
           clockText(kLongestNativeLength / kNativeBytesPerSecond) + " a source may last";
}

}  // namespace tunebox
