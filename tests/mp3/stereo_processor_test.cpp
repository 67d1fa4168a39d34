// Intensity stereo against the standard's formulas. No encoder at hand
// writes intensity-coded frames, so the stage is driven directly: a left
// spectrum, a right spectrum that falls silent above some band, and
// intensity positions in the right channel's scale factors.

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "mp3/decoder/stereo_processor.h"

namespace tunebox {
namespace {

struct Gains {
    double left;
    double right;
};

// MPEG-1: is_ratio = tan(is_pos * pi / 12), L = Li * r / (1 + r),
// R = Li / (1 + r); position 6 is the limit r -> infinity.
Gains mpeg1Expected(int position) {
    if (position == 6) {
        return {1.0, 0.0};
    }
    const double ratio = std::tan(position * std::numbers::pi / 12.0);
    return {ratio / (1.0 + ratio), 1.0 / (1.0 + ratio)};
}

// MPEG-2: io = 2^(-1/4) (intensity_scale 0) or 2^(-1/2) (1); odd positions
// scale the left channel by io^((pos + 1) / 2), even ones the right by
// io^(pos / 2).
Gains mpeg2Expected(int position, int intensityScale) {
    const double io = intensityScale ? std::pow(2.0, -0.5) : std::pow(2.0, -0.25);
    if (position & 1) {
        return {std::pow(io, (position + 1) / 2), 1.0};
    }
    return {1.0, std::pow(io, position / 2)};
}

MpegHeader jointStereoHeader(uint32_t versionId, uint32_t modeExtension) {
    MpegHeader header;
    header.versionId = versionId;
    header.channelMode = kJointStereo;
    header.modeExtension = modeExtension;
    return header;
}

Spectrum leftSpectrum() {
    Spectrum left{};
    for (int i = 0; i < kGranuleLines; ++i) {
        left[i] = static_cast<float>(1000.0 * std::sin(0.37 * i + 0.2));
    }
    return left;
}

// Right channel carrying its own lines below `end` only.
Spectrum rightSpectrum(int end) {
    Spectrum right{};
    for (int i = 0; i < end; ++i) {
        right[i] = static_cast<float>(300.0 * std::cos(0.91 * i));
    }
    return right;
}

void expectBand(const Spectrum& left, const Spectrum& right, const Spectrum& leftIn,
                const Spectrum& rightIn, int begin, int end, bool midSide, const Gains* gains) {
    for (int i = begin; i < end; ++i) {
        double expectedLeft = leftIn[i];
        double expectedRight = rightIn[i];
        if (gains != nullptr) {
            expectedLeft = leftIn[i] * gains->left;
            expectedRight = leftIn[i] * gains->right;
        } else if (midSide) {
            expectedLeft = (leftIn[i] + rightIn[i]) / std::numbers::sqrt2;
            expectedRight = (leftIn[i] - rightIn[i]) / std::numbers::sqrt2;
        }
        ASSERT_NEAR(left[i], expectedLeft, 1e-3) << "line " << i;
        ASSERT_NEAR(right[i], expectedRight, 1e-3) << "line " << i;
    }
}

TEST(IntensityStereo, Mpeg1LongBandsFollowTheirPositionsAndSkipTheIllegalOne) {
    const ScaleFactorBands& bands = scaleFactorBands(0);
    constexpr int kFirstIntensityBand = 6;
    ScaleFactors factors;
    for (int b = 0; b < kLongBands; ++b) {
        // Every position 0..7 appears; band 21 carries no factor of its own.
        factors.longBands[b] = static_cast<uint8_t>((b + 2) % 8);
    }
    factors.longBands[21] = 3;
    for (const int modeExtension : {1, 3}) {
        const bool midSide = modeExtension == 3;
        const MpegHeader header = jointStereoHeader(kMpeg1, modeExtension);
        const GranuleChannelInfo info;
        const Spectrum leftIn = leftSpectrum();
        const Spectrum rightIn = rightSpectrum(bands.longBounds[kFirstIntensityBand]);
        Spectrum left = leftIn;
        Spectrum right = rightIn;
        processJointStereo({header, info, factors, bands}, left, right);
        for (int b = 0; b < kLongBands; ++b) {
            SCOPED_TRACE(testing::Message()
                         << "band " << b << ", mode extension " << modeExtension);
            const int position = factors.longBands[std::min(b, kLongBands - 2)];
            const bool intensity = b >= kFirstIntensityBand && position != 7;
            const Gains gains = mpeg1Expected(position);
            expectBand(left, right, leftIn, rightIn, bands.longBounds[b], bands.longBounds[b + 1],
                       midSide, intensity ? &gains : nullptr);
        }
    }
}

TEST(IntensityStereo, Mpeg1ShortBlocksFindTheBoundaryPerWindow) {
    const ScaleFactorBands& bands = scaleFactorBands(0);
    const MpegHeader header = jointStereoHeader(kMpeg1, 1);
    GranuleChannelInfo info;
    info.windowSwitching = true;
    info.blockType = BlockType::Short;
    ScaleFactors factors;
    for (int b = 0; b < kShortBands; ++b) {
        for (int w = 0; w < 3; ++w) {
            factors.shortBands[b][w] = static_cast<uint8_t>((b + 3 * w) % 8);
        }
    }
    auto lines = [&](int band, int window) {
        const int width = bands.shortBounds[band + 1] - bands.shortBounds[band];
        const int begin = 3 * bands.shortBounds[band] + window * width;
        return std::pair{begin, begin + width};
    };
    // Window 0 carries the right channel up to band 3, window 1 not at all,
    // window 2 up to band 8.
    const std::array<int, 3> firstIntensity{4, 0, 9};
    const Spectrum leftIn = leftSpectrum();
    Spectrum rightIn{};
    const Spectrum rightLines = rightSpectrum(kGranuleLines);
    for (int w = 0; w < 3; ++w) {
        for (int b = 0; b < firstIntensity[w]; ++b) {
            const auto [begin, end] = lines(b, w);
            std::copy(rightLines.begin() + begin, rightLines.begin() + end,
                      rightIn.begin() + begin);
        }
    }
    Spectrum left = leftIn;
    Spectrum right = rightIn;
    processJointStereo({header, info, factors, bands}, left, right);
    for (int w = 0; w < 3; ++w) {
        for (int b = 0; b < kShortBands; ++b) {
            SCOPED_TRACE(testing::Message() << "band " << b << ", window " << w);
            const int position = factors.shortBands[std::min(b, kShortBands - 2)][w];
            const bool intensity = b >= firstIntensity[w] && position != 7;
            const Gains gains = mpeg1Expected(position);
            const auto [begin, end] = lines(b, w);
            expectBand(left, right, leftIn, rightIn, begin, end, false,
                       intensity ? &gains : nullptr);
        }
    }
}

TEST(IntensityStereo, Mpeg2ScalesOneSideInBothIntensityScales) {
    const ScaleFactorBands& bands = scaleFactorBands(3);
    const MpegHeader header = jointStereoHeader(kMpeg2, 1);
    constexpr int kFirstIntensityBand = 4;
    ScaleFactors factors;
    for (int b = 0; b < kLongBands; ++b) {
        // Three-bit factors: 7 is the illegal position.
        factors.longLimit[b] = 7;
        factors.longBands[b] = static_cast<uint8_t>(b % 8);
    }
    for (const int intensityScale : {0, 1}) {
        GranuleChannelInfo info;
        info.scalefacCompress = 100 + intensityScale;
        const Spectrum leftIn = leftSpectrum();
        const Spectrum rightIn = rightSpectrum(bands.longBounds[kFirstIntensityBand]);
        Spectrum left = leftIn;
        Spectrum right = rightIn;
        processJointStereo({header, info, factors, bands}, left, right);
        for (int b = 0; b < kLongBands; ++b) {
            SCOPED_TRACE(testing::Message() << "band " << b << ", scale " << intensityScale);
            const int source = std::min(b, kLongBands - 2);
            const int position = factors.longBands[source];
            const bool intensity =
                b >= kFirstIntensityBand && position != factors.longLimit[source];
            const Gains gains = mpeg2Expected(position, intensityScale);
            expectBand(left, right, leftIn, rightIn, bands.longBounds[b], bands.longBounds[b + 1],
                       false, intensity ? &gains : nullptr);
        }
    }
}

}  // namespace
}  // namespace tunebox
