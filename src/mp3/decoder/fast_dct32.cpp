#include "mp3/decoder/fast_dct32.h"

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
void dct(DctLanes* x, const float* inverseCosines) {
    if constexpr (N == 1) {
        (void)x;
        (void)inverseCosines;
    } else {
        constexpr int kHalf = N / 2;
        std::array<DctLanes, kHalf> sums;
        std::array<DctLanes, kHalf> differences;
        for (int k = 0; k < kHalf; ++k) {
            const float scale = inverseCosines[k];
            const DctLanes& a = x[k];
            const DctLanes& b = x[N - 1 - k];
            for (int lane = 0; lane < kDctLanes; ++lane) {
                sums[k][lane] = a[lane] + b[lane];
                differences[k][lane] = (a[lane] - b[lane]) * scale;
            }
        }
        dct<kHalf>(sums.data(), inverseCosines + kHalf);
        dct<kHalf>(differences.data(), inverseCosines + kHalf);
        for (int m = 0; m < kHalf; ++m) {
            x[2 * m] = sums[m];
            if (m + 1 < kHalf) {
                for (int lane = 0; lane < kDctLanes; ++lane) {
                    x[2 * m + 1][lane] = differences[m][lane] + differences[m + 1][lane];
                }
            } else {
                x[2 * m + 1] = differences[m];
            }
        }
    }
}

}  // namespace

void dct32(std::array<DctLanes, 32>& values) {
    dct<32>(values.data(), dctTables().inverseCosines.data());
}

// The tables hold each size's cosines after those of the sizes above it.
void dctNarrow(DctLanes* rows, int points) {
    const float* inverseCosines = dctTables().inverseCosines.data();
    if (points == 16) {
        dct<16>(rows, inverseCosines + 16);
    } else {
        dct<8>(rows, inverseCosines + 16 + 8);
    }
}

}  // namespace tunebox
