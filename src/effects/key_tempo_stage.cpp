#include "effects/key_tempo_stage.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tunebox {
namespace {

constexpr uint32_t kChunkFrames = 1024;
constexpr uint32_t kChannels = 2;
constexpr float kFullScale = 32768.0f;
// Where the stage and the plain source take over from each other, one fades
// into the other over this many frames (23 ms): long enough that the step
// between their waveforms makes no click, short enough not to be heard as a
// fade.
constexpr uint32_t kSpliceFrames = 1024;
// The plain source kept for that: the splice and the end of a tail, which
// the stretcher winds down rather than plays, are replaced from it.
constexpr uint32_t kPlainHistoryFrames = 8192;
// The most a tail may hold; the stretcher keeps far less than this.
constexpr uint32_t kLongestTailFrames = 65536;

// The weight of the incoming sound at frame `i` of a splice `frames` long:
// a raised cosine, so the two weights always add up to one.
float incomingWeight(uint32_t i, uint32_t frames) {
    const float phase = std::numbers::pi_v<float> * (static_cast<float>(i) + 0.5f) / frames;
    return 0.5f - 0.5f * std::cos(phase);
}

int16_t blend(int16_t outgoing, int16_t incoming, float incomingShare) {
    const float mixed = outgoing + (incoming - outgoing) * incomingShare;
    return static_cast<int16_t>(std::nearbyint(mixed));
}

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
      right_(kChunkFrames),
      plainHistory_(kPlainHistoryFrames * kChannels),
      tail_(kLongestTailFrames * kChannels) {
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
    plainFed_ = outputMade_ = 0;
    fadeInFrames_ = 0;
    finishing_ = false;
    tailFrames_ = tailHandedOut_ = 0;
    feedSilence(stretcher_.startPad());
    toDrop_ = stretcher_.startDelay();
}

void KeyTempoStage::startFromPlain() {
    start();
    fadeInFrames_ = kSpliceFrames;
}

// Frame `frame` of the run's plain source, while the history still holds it.
const int16_t* KeyTempoStage::plainFrame(uint64_t frame) const {
    if (frame >= plainFed_ || plainFed_ - frame > kPlainHistoryFrames) {
        return nullptr;
    }
    return plainHistory_.data() + kChannels * (frame % kPlainHistoryFrames);
}

void KeyTempoStage::remember(const int16_t* frames, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i, ++plainFed_) {
        const std::size_t slot = kChannels * (plainFed_ % kPlainHistoryFrames);
        plainHistory_[slot] = frames[kChannels * i];
        plainHistory_[slot + 1] = frames[kChannels * i + 1];
    }
}

// Output frame k of a run is made from input frame k, so the first frames
// fade over from the very sound the plain source would have played.
void KeyTempoStage::fadeInFromPlain(int16_t* out, uint32_t frames) {
    for (uint32_t i = 0; i < frames && outputMade_ + i < fadeInFrames_; ++i) {
        const auto k = static_cast<uint32_t>(outputMade_ + i);
        if (const int16_t* plain = plainFrame(k)) {
            const float share = incomingWeight(k, fadeInFrames_);
            for (uint32_t c = 0; c < kChannels; ++c) {
                out[kChannels * i + c] = blend(plain[c], out[kChannels * i + c], share);
            }
        }
    }
    outputMade_ += frames;
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
    remember(interleaved_.data(), frames);
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
    fadeInFromPlain(out, written);
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
    if (!finishing_) {
        collectTail();
        fadeTailToPlain();
        finishing_ = true;
    }
    const uint32_t count = std::min(frames, tailFrames_ - tailHandedOut_);
    std::copy_n(tail_.data() + kChannels * tailHandedOut_, kChannels * count, out);
    tailHandedOut_ += count;
    return {count, tailHandedOut_ == tailFrames_};
}

void KeyTempoStage::collectTail() {
    EndedInput ended;
    tailFrames_ = 0;
    while (tailFrames_ < kLongestTailFrames) {
        const StageOutput part =
            render(ended, tail_.data() + kChannels * tailFrames_, kLongestTailFrames - tailFrames_);
        tailFrames_ += part.frames;
        if (part.ended || part.frames == 0) {
            break;
        }
    }
}

// The tail ends where the input did: its frame t was made from input frame
// fed - tailFrames_ + t. The stretcher winds its last frames down instead of
// playing them, so those are the plain source's own, faded into from the
// tail just before.
void KeyTempoStage::fadeTailToPlain() {
    const uint32_t replaced =
        std::min({tailFrames_, stretcher_.startDelay(), kPlainHistoryFrames - kSpliceFrames});
    const uint32_t kept = tailFrames_ - replaced;
    const uint32_t fade = std::min(kSpliceFrames, kept);
    for (uint32_t t = kept - fade; t < tailFrames_; ++t) {
        const int64_t input = static_cast<int64_t>(plainFed_) - tailFrames_ + t;
        const int16_t* plain = input < 0 ? nullptr : plainFrame(static_cast<uint64_t>(input));
        if (plain == nullptr) {
            continue;
        }
        const float share = t < kept ? incomingWeight(t - (kept - fade), fade) : 1.0f;
        for (uint32_t c = 0; c < kChannels; ++c) {
            tail_[kChannels * t + c] = blend(tail_[kChannels * t + c], plain[c], share);
        }
    }
}

}  // namespace tunebox
