#pragma once
// A real-time pitch shifter and time stretcher for planar float audio: the
// engines see only this, never the library that does the work. Everything
// is allocated on construction; the calls below, including the changes of
// pitch and ratio, allocate nothing while audio flows.

#include <cstdint>
#include <memory>

namespace tunebox {

class TimeStretcher {
  public:
    // `maxBlockFrames` bounds every process() call. With `preserveFormants`
    // a voice keeps its timbre when the pitch moves.
    TimeStretcher(uint32_t sampleRate, uint32_t channels, uint32_t maxBlockFrames,
                  bool preserveFormants);
    ~TimeStretcher();
    TimeStretcher(const TimeStretcher&) = delete;
    TimeStretcher& operator=(const TimeStretcher&) = delete;

    // 2.0 is an octave up. Takes effect with the next block processed.
    void setPitchScale(double scale);
    // Output length over input length: 1.25 plays at 80 % tempo.
    void setTimeRatio(double ratio);
    void setFormantPreserved(bool preserve);

    // Forgets all history, as after construction.
    void reset();
    // Silent frames to feed before the first real ones, and output frames to
    // drop after that, so that output frame 0 is input frame 0.
    uint32_t startPad() const;
    uint32_t startDelay() const;

    // `channels` points to one array per channel of `frames` samples.
    // `final` marks the last input: everything held back is then released.
    void process(const float* const* channels, uint32_t frames, bool final);
    // Output frames ready to retrieve.
    uint32_t available() const;
    // True once the final input has been processed and all of it retrieved.
    bool finished() const;
    // Up to `frames` frames into one array per channel; returns how many.
    uint32_t retrieve(float* const* channels, uint32_t frames);

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tunebox
