#include "effects/key_tempo_stage.h"

#include <algorithm>
#include <cmath>

namespace tunebox {
namespace {

constexpr uint32_t kChunkFrames = 1024;
constexpr uint32_t kChannels = 2;
constexpr float kFullScale = 32768.0f;

// A source that has ended: the stretcher is told so and lets go of its tail.
class EndedInput final : public StageInput {
  public:
    uint32_t readFrames(int16_t*, uint32_t, bool& ended) override {
        ended = true;
        return 0;
    }
};

int16_t toSample(float value) {
    const float scaled = std::nearbyint(value * kFullScale);
    return static_cast<int16_t>(std::clamp(scaled, -kFullScale, kFullScale - 1.0f));
}

}  // namespace

KeyTempoStage::KeyTempoStage(const KeyTempo& settings, uint32_t sampleRate)
    : settings_(settings),
      stretcher_(sampleRate, kChannels, kChunkFrames, settings.preserveFormants),
      interleaved_(kChunkFrames * kChannels),
      left_(kChunkFrames),
      right_(kChunkFrames) {
    set(settings);
    start();
}

void KeyTempoStage::set(const KeyTempo& settings) {
    settings_ = settings;
    stretcher_.setPitchScale(settings.pitchScale());
    stretcher_.setTimeRatio(settings.timeRatio());
    stretcher_.setFormantPreserved(settings.preserveFormants);
}

void KeyTempoStage::start() {
    stretcher_.reset();
    inputEnded_ = false;
    feedSilence(stretcher_.startPad());
    toDrop_ = stretcher_.startDelay();
}

void KeyTempoStage::feedSilence(uint32_t frames) {
    std::fill(left_.begin(), left_.end(), 0.0f);
    std::fill(right_.begin(), right_.end(), 0.0f);
    while (frames > 0) {
        const uint32_t chunk = std::min(frames, kChunkFrames);
        process(chunk, false);
        frames -= chunk;
    }
}

void KeyTempoStage::process(uint32_t frames, bool final) {
    const float* const channels[] = {left_.data(), right_.data()};
    stretcher_.process(channels, frames, final);
}

// One chunk of the source into the stretcher; the last one marked final.
void KeyTempoStage::feed(StageInput& input) {
    bool ended = false;
    const uint32_t frames = input.readFrames(interleaved_.data(), kChunkFrames, ended);
    for (uint32_t i = 0; i < frames; ++i) {
        left_[i] = interleaved_[kChannels * i] / kFullScale;
        right_[i] = interleaved_[kChannels * i + 1] / kFullScale;
    }
    inputEnded_ = ended || frames == 0;
    process(frames, inputEnded_);
}

uint32_t KeyTempoStage::drain(int16_t* out, uint32_t frames) {
    uint32_t written = 0;
    while (written < frames && stretcher_.available() > 0) {
        float* const channels[] = {left_.data(), right_.data()};
        const uint32_t wanted = std::min({frames - written, stretcher_.available(), kChunkFrames});
        const uint32_t got = stretcher_.retrieve(channels, wanted);
        if (got == 0) {
            break;
        }
        // The stretcher's delay comes out first, as silence: it is not played.
        const uint32_t dropped = std::min(toDrop_, got);
        toDrop_ -= dropped;
        for (uint32_t i = dropped; i < got; ++i, ++written) {
            out[kChannels * written] = toSample(left_[i]);
            out[kChannels * written + 1] = toSample(right_[i]);
        }
    }
    return written;
}

StageOutput KeyTempoStage::render(StageInput& input, int16_t* out, uint32_t frames) {
    uint32_t written = 0;
    for (;;) {
        written += drain(out + kChannels * written, frames - written);
        if (written == frames || inputEnded_) {
            break;
        }
        feed(input);
    }
    // The final chunk may leave the tail in the stretcher: it comes out with
    // the next call, and the run ends only once that is drained.
    return {written, inputEnded_ && stretcher_.available() == 0};
}

StageOutput KeyTempoStage::finish(int16_t* out, uint32_t frames) {
    EndedInput ended;
    return render(ended, out, frames);
}

}  // namespace tunebox
