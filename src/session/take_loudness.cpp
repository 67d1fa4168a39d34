#include "session/take_loudness.h"

#include <algorithm>
#include <cmath>

#include "core/wave_format.h"
#include "session/source_samples.h"

namespace tunebox {

NormalizeGain normalizeGain(const Loudness& loudness, double targetLufs) {
    if (!std::isfinite(loudness.integratedLufs) || !std::isfinite(loudness.truePeakDbtp)) {
        return {0.0, GainReason::kUnmeasurable};
    }
    const double toTarget = targetLufs - loudness.integratedLufs;
    const double toCeiling = kNormalizedPeakCeilingDbtp - loudness.truePeakDbtp;
    if (toCeiling < toTarget) {
        return {toCeiling, GainReason::kPeakLimited};
    }
    return {toTarget, GainReason::kReachesTarget};
}

std::optional<Loudness> measureTakeLoudness(const std::string& path, const SourceOptions& options,
                                            std::string& problem) {
    LoudnessMeter meter(kNativeSampleRate);
    problem = forEachSourceBlock(path, options, [&meter](std::span<const int16_t> samples) {
        return meter.add(samples) ? std::string() : std::string("the loudness meter failed");
    });
    if (!problem.empty()) {
        return std::nullopt;
    }
    return meter.measure();
}

}  // namespace tunebox
