#include "capture/offset_finder.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace tunebox {
namespace {

using Complex = std::complex<double>;

// Below this the recording is taken as silence.
constexpr double kSilenceRms = 1e-4;
// More than this share of samples at full scale means the input clipped.
constexpr double kClippedShare = 0.001;
constexpr float kFullScale = 32767.0f / 32768.0f;
// A real copy of the reference correlates at least this well.
constexpr double kMinimumMatch = 0.3;

void fft(std::vector<Complex>& values, bool inverse) {
    const std::size_t size = values.size();
    for (std::size_t i = 1, j = 0; i < size; ++i) {
        std::size_t bit = size >> 1;
        for (; j & bit; bit >>= 1) {
            j ^= bit;
        }
        j ^= bit;
        if (i < j) {
            std::swap(values[i], values[j]);
        }
    }
    for (std::size_t length = 2; length <= size; length <<= 1) {
        const double angle = 2 * std::numbers::pi / double(length) * (inverse ? 1 : -1);
        const Complex unit(std::cos(angle), std::sin(angle));
        for (std::size_t start = 0; start < size; start += length) {
            Complex twiddle(1);
            for (std::size_t k = 0; k < length / 2; ++k) {
                const Complex even = values[start + k];
                const Complex odd = values[start + k + length / 2] * twiddle;
                values[start + k] = even + odd;
                values[start + k + length / 2] = even - odd;
                twiddle *= unit;
            }
        }
    }
    if (inverse) {
        for (Complex& value : values) {
            value /= double(size);
        }
    }
}

// correlation[lag] = sum over n of reference[n] * captured[n + lag], for
// lags from -(reference size - 1) to captured size - 1 (negative lags wrap).
std::vector<double> crossCorrelate(std::span<const float> reference,
                                   std::span<const float> captured) {
    std::size_t size = 1;
    while (size < reference.size() + captured.size()) {
        size <<= 1;
    }
    std::vector<Complex> ref(size), cap(size);
    std::copy(reference.begin(), reference.end(), ref.begin());
    std::copy(captured.begin(), captured.end(), cap.begin());
    fft(ref, false);
    fft(cap, false);
    for (std::size_t i = 0; i < size; ++i) {
        cap[i] *= std::conj(ref[i]);
    }
    fft(cap, true);
    std::vector<double> correlation(size);
    std::transform(cap.begin(), cap.end(), correlation.begin(),
                   [](const Complex& value) { return value.real(); });
    return correlation;
}

double energy(std::span<const float> samples) {
    double sum = 0;
    for (const float sample : samples) {
        sum += double(sample) * sample;
    }
    return sum;
}

// Energy of the captured samples that overlap the reference at `offset`.
double overlapEnergy(std::span<const float> captured, std::size_t referenceSize, int64_t offset) {
    const int64_t begin = std::max<int64_t>(offset, 0);
    const int64_t end =
        std::min<int64_t>(offset + int64_t(referenceSize), int64_t(captured.size()));
    return begin < end ? energy(captured.subspan(begin, end - begin)) : 0.0;
}

std::string problemWithRecording(std::span<const float> captured) {
    if (captured.empty() || std::sqrt(energy(captured) / double(captured.size())) < kSilenceRms) {
        return "the input is silent";
    }
    const auto clipped = std::count_if(captured.begin(), captured.end(),
                                       [](float sample) { return std::abs(sample) >= kFullScale; });
    if (double(clipped) > kClippedShare * double(captured.size())) {
        return "the input is clipping";
    }
    return {};
}

}  // namespace

OffsetSearch findOffset(std::span<const float> reference, std::span<const float> captured,
                        int64_t minOffset, int64_t maxOffset) {
    OffsetSearch search;
    search.reason = problemWithRecording(captured);
    if (!search.reason.empty()) {
        return search;
    }
    const double referenceEnergy = energy(reference);
    const std::vector<double> correlation = crossCorrelate(reference, captured);
    const int64_t size = int64_t(correlation.size());
    const int64_t first = std::max<int64_t>(minOffset, 1 - int64_t(reference.size()));
    const int64_t last = std::min<int64_t>(maxOffset, int64_t(captured.size()) - 1);
    double best = 0;
    for (int64_t offset = first; offset <= last; ++offset) {
        const double value = correlation[std::size_t((offset + size) % size)];
        if (value > best) {
            best = value;
            search.offsetFrames = offset;
        }
    }
    const double scale =
        std::sqrt(referenceEnergy * overlapEnergy(captured, reference.size(), search.offsetFrames));
    search.match = scale > 0 ? best / scale : 0.0;
    search.found = search.match >= kMinimumMatch;
    if (!search.found) {
        search.reason = "no clear copy of the measurement signal in the input (noise only?)";
    }
    return search;
}

std::vector<float> leftChannel(std::span<const int16_t> stereo) {
    std::vector<float> mono(stereo.size() / 2);
    for (std::size_t i = 0; i < mono.size(); ++i) {
        mono[i] = float(stereo[2 * i]) / 32768.0f;
    }
    return mono;
}

}  // namespace tunebox
