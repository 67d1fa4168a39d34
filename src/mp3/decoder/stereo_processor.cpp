#include "mp3/decoder/stereo_processor.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tunebox {
namespace {

struct Gains {
    float left;
    float right;
};

// MPEG-1: the position is an angle in steps of 15 degrees.
Gains mpeg1Gains(int position) {
    const double angle = position * std::numbers::pi / 12.0;
    const double sine = std::sin(angle);
    const double cosine = std::cos(angle);
    return {static_cast<float>(sine / (sine + cosine)),
            static_cast<float>(cosine / (sine + cosine))};
}

// MPEG-2: the position attenuates one side in steps of 1.5 or 3 dB.
Gains mpeg2Gains(int position, int intensityScale) {
    if (position == 0) {
        return {1.0f, 1.0f};
    }
    const double step = intensityScale ? -0.5 : -0.25;
    if (position & 1) {
        return {static_cast<float>(std::exp2(step * ((position + 1) / 2))), 1.0f};
    }
    return {1.0f, static_cast<float>(std::exp2(step * (position / 2)))};
}

// MPEG-1 positions run 0..6; 7 (and anything a damaged stream puts above)
// means the band is not intensity coded.
constexpr int kMpeg1Reserved = 7;

class JointStereo {
  public:
    JointStereo(const StereoInput& input, Spectrum& left, Spectrum& right)
        : input_(input), left_(left), right_(right) {}

    void run() {
        if (!input_.header.intensityStereo()) {
            midSide(0, input_.nonZeroEnd);
            return;
        }
        const GranuleChannelInfo& info = input_.rightInfo;
        if (!info.shortBlocks()) {
            longPart(kLongBands, firstZeroLongBand(kLongBands));
            return;
        }
        const int firstShort = info.mixedBlock ? 3 : 0;
        bool shortPartSilent = true;
        for (int window = 0; window < 3; ++window) {
            const int firstIntensity = firstZeroShortBand(firstShort, window);
            shortPartSilent = shortPartSilent && firstIntensity == firstShort;
            shortPart(firstShort, firstIntensity, window);
        }
        if (info.mixedBlock) {
            const int longBands = mixedLongBands(input_.header.isMpeg1());
            longPart(longBands, shortPartSilent ? firstZeroLongBand(longBands) : longBands);
        }
    }

  private:
    void midSide(int begin, int end) {
        if (!input_.header.msStereo()) {
            return;
        }
        constexpr float kHalfRoot = std::numbers::sqrt2_v<float> / 2.0f;
        for (int i = begin; i < end; ++i) {
            const float mid = left_[i];
            const float side = right_[i];
            left_[i] = (mid + side) * kHalfRoot;
            right_[i] = (mid - side) * kHalfRoot;
        }
    }

    // A band is intensity coded unless its position is the reserved one.
    void band(int begin, int end, int position, int limit) {
        const bool reserved =
            input_.header.isMpeg1() ? position >= kMpeg1Reserved : position == limit;
        if (reserved) {
            midSide(begin, end);
            return;
        }
        const Gains gains = input_.header.isMpeg1()
                                ? mpeg1Gains(position)
                                : mpeg2Gains(position, input_.rightInfo.scalefacCompress & 1);
        for (int i = begin; i < end; ++i) {
            const float value = left_[i];
            left_[i] = value * gains.left;
            right_[i] = value * gains.right;
        }
    }

    bool anyNonZero(int begin, int end) const {
        return std::any_of(right_.begin() + begin, right_.begin() + end,
                           [](float v) { return v != 0.0f; });
    }

    // The first band above the highest band where the right channel still
    // carries its own spectrum.
    int firstZeroLongBand(int bandCount) const {
        const auto& bounds = input_.bands.longBounds;
        for (int b = bandCount - 1; b >= 0; --b) {
            if (anyNonZero(bounds[b], bounds[b + 1])) {
                return b + 1;
            }
        }
        return 0;
    }

    int firstZeroShortBand(int firstBand, int window) const {
        for (int b = kShortBands - 1; b >= firstBand; --b) {
            const auto [begin, end] = shortLines(b, window);
            if (anyNonZero(begin, end)) {
                return b + 1;
            }
        }
        return firstBand;
    }

    std::pair<int, int> shortLines(int band, int window) const {
        const auto& bounds = input_.bands.shortBounds;
        const int width = bounds[band + 1] - bounds[band];
        const int begin = 3 * bounds[band] + window * width;
        return {begin, begin + width};
    }

    // The top band has no factor of its own and follows the one below it.
    void longPart(int bandCount, int firstIntensity) {
        const auto& bounds = input_.bands.longBounds;
        const ScaleFactors& factors = input_.rightFactors;
        for (int b = 0; b < bandCount; ++b) {
            if (b < firstIntensity) {
                midSide(bounds[b], bounds[b + 1]);
                continue;
            }
            const int source = b == kLongBands - 1 ? b - 1 : b;
            band(bounds[b], bounds[b + 1], factors.longBands[source], factors.longLimit[source]);
        }
    }

    void shortPart(int firstBand, int firstIntensity, int window) {
        const ScaleFactors& factors = input_.rightFactors;
        for (int b = firstBand; b < kShortBands; ++b) {
            const auto [begin, end] = shortLines(b, window);
            if (b < firstIntensity) {
                midSide(begin, end);
                continue;
            }
            const int source = b == kShortBands - 1 ? b - 1 : b;
            band(begin, end, factors.shortBands[source][window], factors.shortLimit[source]);
        }
    }

    const StereoInput& input_;
    Spectrum& left_;
    Spectrum& right_;
};

}  // namespace

void processJointStereo(const StereoInput& input, Spectrum& left, Spectrum& right) {
    if (input.header.channelMode != kJointStereo) {
        return;
    }
    JointStereo(input, left, right).run();
}

}  // namespace tunebox
