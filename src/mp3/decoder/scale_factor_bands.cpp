#include "mp3/decoder/scale_factor_bands.h"

namespace tunebox {
namespace {

constexpr std::array<int, kLongBands + 1> kLongLowRates{0,   6,   12,  18,  24,  30,  36,  44,
                                                        54,  66,  80,  96,  116, 140, 168, 200,
                                                        238, 284, 336, 396, 464, 522, 576};
constexpr std::array<int, kShortBands + 1> kShortLowRates{0,  4,  8,  12,  18,  26,  36,
                                                          48, 62, 80, 104, 134, 174, 192};

constexpr std::array<ScaleFactorBands, 9> kBands{{
    // 44.1 kHz
    {{0,  4,  8,   12,  16,  20,  24,  30,  36,  44,  52, 62,
      74, 90, 110, 134, 162, 196, 238, 288, 342, 418, 576},
     {0, 4, 8, 12, 16, 22, 30, 40, 52, 66, 84, 106, 136, 192}},
    // 48 kHz
    {{0,  4,  8,   12,  16,  20,  24,  30,  36,  42,  50, 60,
      72, 88, 106, 128, 156, 190, 230, 276, 330, 384, 576},
     {0, 4, 8, 12, 16, 22, 28, 38, 50, 64, 80, 100, 126, 192}},
    // 32 kHz
    {{0,  4,   8,   12,  16,  20,  24,  30,  36,  44,  54, 66,
      82, 102, 126, 156, 194, 240, 296, 364, 448, 550, 576},
     {0, 4, 8, 12, 16, 22, 30, 42, 58, 78, 104, 138, 180, 192}},
    // 22.05 kHz
    {kLongLowRates, {0, 4, 8, 12, 18, 24, 32, 42, 56, 74, 100, 132, 174, 192}},
    // 24 kHz
    {{0,   6,   12,  18,  24,  30,  36,  44,  54,  66,  80, 96,
      114, 136, 162, 194, 232, 278, 332, 394, 464, 540, 576},
     {0, 4, 8, 12, 18, 26, 36, 48, 62, 80, 104, 136, 180, 192}},
    // 16 kHz
    {kLongLowRates, kShortLowRates},
    // 11.025 kHz
    {kLongLowRates, kShortLowRates},
    // 12 kHz
    {kLongLowRates, kShortLowRates},
    // 8 kHz
    {{0,   12,  24,  36,  48,  60,  72,  88,  108, 132, 160, 192,
      232, 280, 336, 400, 476, 566, 568, 570, 572, 574, 576},
     {0, 8, 16, 24, 36, 52, 72, 96, 124, 160, 162, 164, 166, 192}},
}};

}  // namespace

const ScaleFactorBands& scaleFactorBands(int rateTableIndex) {
    return kBands[rateTableIndex];
}

}  // namespace tunebox
