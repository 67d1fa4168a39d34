#include "mp3/decoder/requantizer.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace tunebox {
namespace {

constexpr std::array<int, kLongBands> kPretab{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                              1, 1, 1, 1, 2, 2, 3, 3, 3, 2, 0};
// Largest magnitude a big value can carry: 15 plus 13 linbits.
constexpr int kLargestMagnitude = 15 + 8191;
constexpr int kLowestExponent = -512;
constexpr int kHighestExponent = 64;

struct PowerTables {
    // sign(q) |q|^(4/3), indexed by q + kLargestMagnitude: no sign handling
    // per line.
    std::vector<float> pow43;
    std::vector<float> pow2Quarter;  // 2^(e/4) for e from kLowestExponent
};

const PowerTables& powerTables() {
    static const PowerTables tables = [] {
        PowerTables built;
        built.pow43.resize(2 * kLargestMagnitude + 1);
        for (int q = -kLargestMagnitude; q <= kLargestMagnitude; ++q) {
            const double magnitude = std::pow(std::abs(q), 4.0 / 3.0);
            built.pow43[q + kLargestMagnitude] = static_cast<float>(q < 0 ? -magnitude : magnitude);
        }
        built.pow2Quarter.resize(kHighestExponent - kLowestExponent);
        for (int e = kLowestExponent; e < kHighestExponent; ++e) {
            built.pow2Quarter[e - kLowestExponent] = static_cast<float>(std::exp2(e / 4.0));
        }
        return built;
    }();
    return tables;
}

void scaleLines(const RequantizeInput& input, int begin, int end, int exponent, Spectrum& out) {
    const PowerTables& tables = powerTables();
    const int index = std::clamp(exponent, kLowestExponent, kHighestExponent - 1) - kLowestExponent;
    const float scale = tables.pow2Quarter[index];
    end = std::min(end, input.nonZeroEnd);
    // Huffman decoding never yields more than kLargestMagnitude.
    const float* pow43 = tables.pow43.data() + kLargestMagnitude;
    for (int i = begin; i < end; ++i) {
        out[i] = pow43[input.lines[i]] * scale;
    }
}

int baseExponent(const GranuleChannelInfo& info) {
    return info.globalGain - 210;
}

void requantizeLongBands(const RequantizeInput& input, int bandCount, Spectrum& out) {
    const GranuleChannelInfo& info = input.info;
    const int shift = 1 + info.scalefacScale;
    for (int band = 0; band < bandCount; ++band) {
        const int factor = input.factors.longBands[band] + (info.preflag ? kPretab[band] : 0);
        scaleLines(input, input.bands.longBounds[band], input.bands.longBounds[band + 1],
                   baseExponent(info) - (factor << shift), out);
    }
}

void requantizeShortBands(const RequantizeInput& input, int firstBand, Spectrum& out) {
    const GranuleChannelInfo& info = input.info;
    const int shift = 1 + info.scalefacScale;
    for (int band = firstBand; band < kShortBands; ++band) {
        const int width = input.bands.shortBounds[band + 1] - input.bands.shortBounds[band];
        const int start = 3 * input.bands.shortBounds[band];
        for (int window = 0; window < 3; ++window) {
            const int exponent = baseExponent(info) - 8 * info.subblockGain[window] -
                                 (input.factors.shortBands[band][window] << shift);
            const int begin = start + window * width;
            scaleLines(input, begin, begin + width, exponent, out);
        }
    }
}

}  // namespace

void requantize(const RequantizeInput& input, Spectrum& spectrum) {
    spectrum.fill(0.0f);
    if (!input.info.shortBlocks()) {
        requantizeLongBands(input, kLongBands, spectrum);
    } else if (input.info.mixedBlock) {
        requantizeLongBands(input, mixedLongBands(input.mpeg1), spectrum);
        requantizeShortBands(input, 3, spectrum);
    } else {
        requantizeShortBands(input, 0, spectrum);
    }
}

}  // namespace tunebox
