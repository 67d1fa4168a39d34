#include "platform/time_stretcher.h"

#include <rubberband/RubberBandStretcher.h>

namespace tunebox {

using RubberBand::RubberBandStretcher;

namespace {

// The faster engine keeps a pitch-shifted stereo track well under a tenth of
// a core; consistency keeps the sound smooth while the pitch is moved.
RubberBandStretcher::Options optionsFor(bool preserveFormants) {
    return RubberBandStretcher::OptionProcessRealTime | RubberBandStretcher::OptionEngineFaster |
           RubberBandStretcher::OptionPitchHighConsistency |
           RubberBandStretcher::OptionChannelsTogether |
           (preserveFormants ? RubberBandStretcher::OptionFormantPreserved
                             : RubberBandStretcher::OptionFormantShifted);
}

}  // namespace

struct TimeStretcher::Impl {
    Impl(uint32_t sampleRate, uint32_t channels, bool preserveFormants)
        : stretcher(sampleRate, channels, optionsFor(preserveFormants)) {}
    RubberBandStretcher stretcher;
};

TimeStretcher::TimeStretcher(uint32_t sampleRate, uint32_t channels, uint32_t maxBlockFrames,
                             bool preserveFormants)
    : impl_(std::make_unique<Impl>(sampleRate, channels, preserveFormants)) {
    impl_->stretcher.setMaxProcessSize(maxBlockFrames);
}

TimeStretcher::~TimeStretcher() = default;

void TimeStretcher::setPitchScale(double scale) {
    impl_->stretcher.setPitchScale(scale);
}

void TimeStretcher::setTimeRatio(double ratio) {
    impl_->stretcher.setTimeRatio(ratio);
}

void TimeStretcher::setFormantPreserved(bool preserve) {
    impl_->stretcher.setFormantOption(preserve ? RubberBandStretcher::OptionFormantPreserved
                                               : RubberBandStretcher::OptionFormantShifted);
}

void TimeStretcher::reset() {
    impl_->stretcher.reset();
}

uint32_t TimeStretcher::startPad() const {
    return static_cast<uint32_t>(impl_->stretcher.getPreferredStartPad());
}

uint32_t TimeStretcher::startDelay() const {
    return static_cast<uint32_t>(impl_->stretcher.getStartDelay());
}

void TimeStretcher::process(const float* const* channels, uint32_t frames, bool final) {
    impl_->stretcher.process(channels, frames, final);
}

uint32_t TimeStretcher::available() const {
    const int ready = impl_->stretcher.available();
    return ready > 0 ? static_cast<uint32_t>(ready) : 0;
}

bool TimeStretcher::finished() const {
    return impl_->stretcher.available() < 0;
}

uint32_t TimeStretcher::retrieve(float* const* channels, uint32_t frames) {
    return static_cast<uint32_t>(impl_->stretcher.retrieve(channels, frames));
}

}  // namespace tunebox
