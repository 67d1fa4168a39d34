#include "effects/band_section.h"

#include <cmath>

namespace tunebox {
namespace {

constexpr float kTwoPi = 6.2831855f;
constexpr float kBandQ = 3.0f;
constexpr double kDecibelsPerStep = 0.625;

struct SecondOrderPolynomial {
    float c1;
    float c2;
};

// The polynomial 1 + c1 z^-1 + c2 z^-2 whose roots have radius e^(-wT zeta)
// and the damped angle of a second-order system with damping `zeta`.
SecondOrderPolynomial dampedRoots(double omegaT, double zeta) {
    const double radius = std::exp(-omegaT * zeta);
    const double c1 = std::fabs(zeta) <= 1.0
                          ? -2.0 * radius * std::cos(std::sqrt(1.0 - zeta * zeta) * omegaT)
                          : -2.0 * radius * std::cosh(std::sqrt(zeta * zeta - 1.0) * omegaT);
    return {static_cast<float>(c1), static_cast<float>(radius * radius)};
}

// |1 + c1 e^-jwT + c2 e^-2jwT|
double magnitudeAt(const SecondOrderPolynomial& p, double cosT, double sinT) {
    const double real = (p.c2 + 1.0) * cosT + p.c1;
    const double imaginary = (p.c2 - 1.0) * sinT;
    return std::sqrt(real * real + imaginary * imaginary);
}

}  // namespace

void fltDesignBand(BandSection& section, int band, int value, int sampleRate) {
    section.samplePeriod = 1.0f / static_cast<float>(sampleRate);
    section.gain =
        static_cast<float>(std::pow(10.0, (kFlatBandValue - value) * kDecibelsPerStep / 20.0));
    section.centre = static_cast<float>(kBandBaseFrequencies[band] * kBandCentreRatio);
    section.q = kBandQ;

    const float omega = kTwoPi * section.centre;
    const double omegaT = static_cast<double>(section.samplePeriod) * omega;
    // A cut widens the poles, a boost widens the zeros; the narrow side
    // always keeps the damping 1 / 2Q.
    double zetaZero = 0;
    double zetaPole = 0;
    if (section.gain < 1.0f) {
        zetaZero = 1.0 / (2.0 * section.q);
        zetaPole = zetaZero / section.gain;
    } else {
        zetaPole = 1.0 / (2.0 * section.q);
        zetaZero = zetaPole * section.gain;
    }
    const SecondOrderPolynomial zeros = dampedRoots(omegaT, zetaZero);
    const SecondOrderPolynomial poles = dampedRoots(omegaT, zetaPole);
    section.zero1 = zeros.c1;
    section.zero2 = zeros.c2;
    section.a1 = poles.c1;
    section.a2 = poles.c2;

    // Scale the zeros so that the response at the centre is exactly the gain.
    const double cosT = std::cos(omegaT);
    const double sinT = std::sin(omegaT);
    section.b0 = static_cast<float>(section.gain * magnitudeAt(poles, cosT, sinT) /
                                    magnitudeAt(zeros, cosT, sinT));
    section.b1 = section.zero1 * section.b0;
    section.b2 = section.zero2 * section.b0;
}

}  // namespace tunebox
