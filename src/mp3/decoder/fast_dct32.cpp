#include "mp3/decoder/fast_dct32.h"

#include <array>
#include <cmath>
#include <numbers>

#include "mp3/decoder/simd_kernels.h"

namespace tunebox {
namespace {

static_assert(sizeof(DctLanes) == 20 * sizeof(float));

// 1 / (2 cos((2k + 1) pi / (2n))) for n = 32, 16, 8, 4, 2, stored one level
// after another.
struct DctTables {
    std::array<float, 16 + 8 + 4 + 2 + 1> inverseCosines{};
};

const DctTables& dctTables() {
    static const DctTables built = [] {
        DctTables t;
        int index = 0;
        for (int n = 32; n >= 2; n /= 2) {
            for (int k = 0; k < n / 2; ++k) {
                t.inverseCosines[index++] =
                    static_cast<float>(0.5 / std::cos((2 * k + 1) * std::numbers::pi / (2.0 * n)));
            }
        }
        return t;
    }();
    return built;
}

}  // namespace

// The tables hold each size's cosines after those of the sizes above it.
void dct32(std::array<DctLanes, 32>& values) {
    simdKernels().dct(values[0].data(), 32, dctTables().inverseCosines.data());
}

void dctNarrow(DctLanes* rows, int points) {
    const float* inverseCosines = dctTables().inverseCosines.data();
    simdKernels().dct(rows[0].data(), points, inverseCosines + (points == 16 ? 16 : 16 + 8));
}

}  // namespace tunebox
