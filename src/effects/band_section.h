#pragma once
// One peaking band of the ten-band equaliser for one channel: its design
// and the direct-form-I state it carries from block to block.

#include <array>

namespace tunebox {

inline constexpr int kBandCount = 10;
// Band value that leaves a band flat; each step below boosts by 0.625 dB,
// each step above cuts by as much.
inline constexpr int kFlatBandValue = 24;

struct BandSection {
    float samplePeriod = 0;
    float centre = 0;  // Hz
    float q = 0;
    float gain = 0;  // linear
    float b0 = 0;
    float zero1 = 0;  // zero polynomial before scaling by b0
    float zero2 = 0;
    float a1 = 0;
    float a2 = 0;
    float b1 = 0;
    float b2 = 0;
    float y1 = 0;  // y[n-1]
    float y2 = 0;  // y[n-2]
    float x1 = 0;  // x[n-1]
    float x2 = 0;  // x[n-2]
};

// Base frequencies of the ten bands; the centres lie a fixed ratio above.
inline constexpr std::array<float, kBandCount> kBandBaseFrequencies{
    39.4f, 99.2f, 157.5f, 396.9f, 1000.0f, 1587.4f, 4000.0f, 6349.6f, 10079.3f, 15999.9f};
inline constexpr double kBandCentreRatio = 1.6243643760681152;

// Designs `section` as band `band` with band value `value` at `sampleRate`.
// The filter state is left as it is, so a band can be retuned while it runs.
void fltDesignBand(BandSection& section, int band, int value, int sampleRate);

}  // namespace tunebox
