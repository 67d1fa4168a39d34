#pragma once
// Sample-by-sample comparison of decoded PCM against a reference, in LSB.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "support/test_files.h"

namespace tunebox::test {

struct PcmDifference {
    std::size_t compared = 0;
    int maxDifference = 0;
    double rms = 0.0;
};

// Compares over the reference's length (or the decoded length if shorter).
inline PcmDifference comparePcm(const std::vector<int16_t>& decoded,
                                const std::vector<int16_t>& reference) {
    PcmDifference result;
    result.compared = std::min(decoded.size(), reference.size());
    double squares = 0.0;
    for (std::size_t i = 0; i < result.compared; ++i) {
        const int difference = std::abs(int{decoded[i]} - int{reference[i]});
        result.maxDifference = std::max(result.maxDifference, difference);
        squares += double(difference) * difference;
    }
    result.rms = result.compared ? std::sqrt(squares / double(result.compared)) : 0.0;
    return result;
}

// Signal to difference ratio in dB over `count` samples from `from` (to the
// shorter end when `count` is 0); a shift of a single sample costs tens of dB.
inline double snrDb(const std::vector<int16_t>& decoded, const std::vector<int16_t>& reference,
                    std::size_t from = 0, std::size_t count = 0) {
    const std::size_t end = std::min(decoded.size(), reference.size());
    const std::size_t last = count == 0 ? end : std::min(end, from + count);
    double signal = 0.0;
    double noise = 1e-9;
    for (std::size_t i = from; i < last; ++i) {
        signal += double(reference[i]) * reference[i];
        const double difference = double(decoded[i]) - reference[i];
        noise += difference * difference;
    }
    return 10.0 * std::log10(signal / noise);
}

inline std::vector<int16_t> readPcm(const std::filesystem::path& path) {
    return toSamples(readBytes(path));
}

}  // namespace tunebox::test
