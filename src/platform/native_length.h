#pragma once
// Every length and position the engines handle is a 32-bit count of
// native-PCM bytes, which holds a little under 6 h 46 min of audio. A source
// that plays longer is refused when it is opened, never wrapped or cut.

#include <cstdint>
#include <optional>
#include <string>

namespace tunebox {

inline constexpr uint32_t kLongestNativeLength = UINT32_MAX;

// `nativeBytes`, a playing time in native-PCM bytes, truncated to a whole
// count when that fits in 32 bits.
std::optional<uint32_t> fittingNativeLength(double nativeBytes);

// Why a source of `nativeBytes` is refused, with its playing time and the
// limit: "lasts 7:00:00, longer than the 6:45:47 a source may last".
std::string tooLongReason(double nativeBytes);

}  // namespace tunebox
