#include "platform/loudness_meter.h"

#include <ebur128.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tunebox {

struct LoudnessMeter::State {
    struct Destroy {
        void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
    };
    std::unique_ptr<ebur128_state, Destroy> meter;
};

LoudnessMeter::LoudnessMeter(uint32_t sampleRate) : state_(std::make_unique<State>()) {
    state_->meter.reset(ebur128_init(2, sampleRate, EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK));
}

LoudnessMeter::~LoudnessMeter() = default;

bool LoudnessMeter::add(std::span<const int16_t> samples) {
    if (!state_->meter) {
        return false;
    }
    return samples.size() < 2 || ebur128_add_frames_short(state_->meter.get(), samples.data(),
                                                          samples.size() / 2) == EBUR128_SUCCESS;
}

Loudness LoudnessMeter::measure() const {
    constexpr double kSilence = -std::numeric_limits<double>::infinity();
    Loudness loudness{kSilence, kSilence};
    if (!state_->meter) {
        return loudness;
    }
    ebur128_loudness_global(state_->meter.get(), &loudness.integratedLufs);
    double peak = 0.0;
    for (unsigned int channel = 0; channel < 2; ++channel) {
        double channelPeak = 0.0;
        if (ebur128_true_peak(state_->meter.get(), channel, &channelPeak) == EBUR128_SUCCESS) {
            peak = std::max(peak, channelPeak);
        }
    }
    if (peak > 0.0) {
        loudness.truePeakDbtp = 20.0 * std::log10(peak);
    }
    return loudness;
}

}  // namespace tunebox
