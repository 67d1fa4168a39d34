#include "mp3/fast_dct32.h"

#include <array>
#include <cmath>
#include <numbers>

namespace tunebox {
namespace {

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

template <int N>
void dct(float* x, const float* inverseCosines) {
    if constexpr (N == 1) {
        (void)x;
        (void)inverseCosines;
    } else {
        constexpr int kHalf = N / 2;
        std::array<float, kHalf> sums;
        std::array<float, kHalf> differences;
        for (int k = 0; k < kHalf; ++k) {
            const float a = x[k];
            const float b = x[N - 1 - k];
            sums[k] = a + b;
            differences[k] = (a - b) * inverseCosines[k];
        }
        dct<kHalf>(sums.data(), inverseCosines + kHalf);
        dct<kHalf>(differences.data(), inverseCosines + kHalf);
        for (int m = 0; m < kHalf; ++m) {
            x[2 * m] = sums[m];
            x[2 * m + 1] = differences[m] + (m + 1 < kHalf ? differences[m + 1] : 0.0f);
        }
    }
}

}  // namespace

void dct32(float* values) {
    dct<32>(values, dctTables().inverseCosines.data());
}

}  // namespace tunebox
