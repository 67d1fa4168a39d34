#pragma once
// How loud a take is, and the gain that brings it to a target loudness
// without clipping: gain only, never a limiter, so the true peak caps how far
// a quiet take with loud moments can be raised.

#include <optional>
#include <string>

#include "platform/loudness_meter.h"
#include "playback/source_options.h"

namespace tunebox {

// The highest true peak a normalized take may reach: headroom for the
// overshoot of lossy encoders.
inline constexpr double kNormalizedPeakCeilingDbtp = -1.0;

enum class GainReason {
    kReachesTarget,  // the take now measures the target loudness
    kPeakLimited,    // stopped short of it at the true-peak ceiling
    kUnmeasurable,   // silent or too short to measure: left as it is
};

struct NormalizeGain {
    double decibels = 0.0;
    GainReason reason = GainReason::kReachesTarget;
};

// min(target - integrated, ceiling - true peak), in dB.
NormalizeGain normalizeGain(const Loudness& loudness, double targetLufs);

// The loudness of the file's native PCM; none with `problem` when it cannot
// be read to its end.
std::optional<Loudness> measureTakeLoudness(const std::string& path, const SourceOptions& options,
                                            std::string& problem);

}  // namespace tunebox
