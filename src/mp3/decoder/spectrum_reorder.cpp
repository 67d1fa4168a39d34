#include "mp3/decoder/spectrum_reorder.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tunebox {
namespace {

struct AliasButterfly {
    std::array<float, 8> cs;
    std::array<float, 8> ca;
};

const AliasButterfly& aliasButterfly() {
    static const AliasButterfly butterfly = [] {
        constexpr std::array<double, 8> kCoefficients{-0.6,   -0.535, -0.33,   -0.185,
                                                      -0.095, -0.041, -0.0142, -0.0037};
        AliasButterfly built{};
        for (int i = 0; i < 8; ++i) {
            const double norm = std::sqrt(1.0 + kCoefficients[i] * kCoefficients[i]);
            built.cs[i] = static_cast<float>(1.0 / norm);
            built.ca[i] = static_cast<float>(kCoefficients[i] / norm);
        }
        return built;
    }();
    return butterfly;
}

}  // namespace

void reorderShortBlocks(const GranuleChannelInfo& info, const ScaleFactorBands& bands,
                        Spectrum& spectrum) {
    if (!info.shortBlocks()) {
        return;
    }
    const int firstBand = info.mixedBlock ? 3 : 0;
    Spectrum reordered;
    const int begin = 3 * bands.shortBounds[firstBand];
    for (int band = firstBand; band < kShortBands; ++band) {
        const int start = bands.shortBounds[band];
        const int width = bands.shortBounds[band + 1] - start;
        for (int window = 0; window < 3; ++window) {
            for (int j = 0; j < width; ++j) {
                reordered[3 * (start + j) + window] = spectrum[3 * start + window * width + j];
            }
        }
    }
    std::copy(reordered.begin() + begin, reordered.end(), spectrum.begin() + begin);
}

int subbandsInUse(int lineEnd) {
    // Each butterfly reaches 8 lines into the subband above.
    return std::min(32, (lineEnd + 8 + 17) / 18);
}

void reduceAliasing(const GranuleChannelInfo& info, int subbands, Spectrum& spectrum) {
    if (info.allShort()) {
        return;
    }
    const int boundaries = info.shortBlocks() ? 1 : std::min(31, subbands - 1);
    const AliasButterfly& butterfly = aliasButterfly();
    for (int boundary = 1; boundary <= boundaries; ++boundary) {
        float* below = &spectrum[18 * boundary - 1];
        float* above = &spectrum[18 * boundary];
        for (int i = 0; i < 8; ++i) {
            const float a = below[-i];
            const float b = above[i];
            below[-i] = a * butterfly.cs[i] - b * butterfly.ca[i];
            above[i] = b * butterfly.cs[i] + a * butterfly.ca[i];
        }
    }
}

}  // namespace tunebox
