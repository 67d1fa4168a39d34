#pragma once
// The key and tempo stage: 16-bit stereo in, 16-bit stereo out, moved in
// pitch and stretched in time. It runs ahead of the effect chain, so it
// pulls its input: the caller asks for a block of output and the stage reads
// as much of the source as that takes, which at a slow tempo is less than a
// block and at a fast one more. Output frame 0 of a run is input frame 0 of
// the run: the stretcher's own delay is padded in front and dropped.
//
// All memory is taken on construction; start, set and render allocate none.

#include <cstdint>
#include <memory>
#include <vector>

#include "effects/key_tempo.h"
#include "platform/time_stretcher.h"

namespace tunebox {

// Where the stage reads its input: up to `frames` stereo frames into
// `into`; sets `ended` once the source has nothing more.
class StageInput {
  public:
    virtual uint32_t readFrames(int16_t* into, uint32_t frames, bool& ended) = 0;

  protected:
    ~StageInput() = default;
};

struct StageOutput {
    uint32_t frames = 0;  // written to the output
    bool ended = false;   // the input has ended and everything is out
};

class KeyTempoStage {
  public:
    KeyTempoStage(const KeyTempo& settings, uint32_t sampleRate);

    // Applies new settings from the next block on, with no gap.
    void set(const KeyTempo& settings);
    const KeyTempo& settings() const { return settings_; }

    // A new run from wherever the source now stands: history forgotten.
    void start();
    // The same, taking over from the source's own sound mid-play: the first
    // frames fade over from the plain source to the stage, so the change of
    // key makes no click.
    void startFromPlain();

    // Fills `out` with `frames` frames unless the input ends first.
    StageOutput render(StageInput& input, int16_t* out, uint32_t frames);

    // Ends the run where the source stands: what the stretcher still holds
    // comes out, up to `frames` frames a call; ended once all of it is out.
    // Its last frames fade over to the plain source it was made from, so the
    // source read past the stage then joins without a click.
    StageOutput finish(int16_t* out, uint32_t frames);

    // Output frames the stretcher holds back behind its input.
    uint32_t delayFrames() const { return stretcher_.startDelay(); }

  private:
    void feed(StageInput& input);
    void feedSilence(uint32_t frames);
    void process(uint32_t frames, bool final);
    uint32_t drain(int16_t* out, uint32_t frames);
    void remember(const int16_t* frames, uint32_t count);
    const int16_t* plainFrame(uint64_t frame) const;
    void fadeInFromPlain(int16_t* out, uint32_t frames);
    void collectTail();
    void fadeTailToPlain();

    KeyTempo settings_;
    TimeStretcher stretcher_;
    std::vector<int16_t> interleaved_;
    std::vector<float> left_;
    std::vector<float> right_;
    uint32_t toDrop_ = 0;
    bool inputEnded_ = false;

    // The plain source's last frames fed to the stretcher, a ring: what the
    // stage's output fades from or to where it joins the plain source.
    std::vector<int16_t> plainHistory_;
    uint64_t plainFed_ = 0;  // frames of the run fed so far
    // Output frames of the run so far, and how many of the first ones fade
    // in from the plain source (none for a run that starts afresh).
    uint64_t outputMade_ = 0;
    uint32_t fadeInFrames_ = 0;
    // The whole tail, gathered on the first finish call and handed out from
    // there: its end is only known once all of it is out.
    std::vector<int16_t> tail_;
    uint32_t tailFrames_ = 0;
    uint32_t tailHandedOut_ = 0;
    bool finishing_ = false;
};

}  // namespace tunebox
