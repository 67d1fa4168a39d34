#pragma once
// Simulated output and input devices on one virtual clock. The output plays
// its queued buffers at 44,100 frames per second and is heard after its
// latency; the input captures what is heard (the output times a loopback
// gain, plus an optional voice) and hands each full buffer back after its own
// latency. Positions count frames at the converters, so capture position
// minus playback position is exactly the offset of the output inside the
// captured stream.

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include "platform/audio_backend.h"

namespace tunebox {

// The output stands still for `frames` once it has played `atBytes`, as a
// device whose converter stopped. An unreported stall is one the device
// cannot tell of, as when the sound server itself was held up.
struct VirtualStall {
    uint32_t atBytes = 0;
    uint32_t frames = 0;
    bool reported = true;
};

// The output's position reads `bytes` short while it has played from
// `fromBytes` up to `untilBytes`, though what is heard runs on: the timing
// reports of a sound server that was held up for a moment, which catch up
// with one stream later than with the other.
struct VirtualPositionLag {
    uint32_t fromBytes = 0;
    uint32_t untilBytes = 0;
    uint32_t bytes = 0;
};

struct VirtualAudioConfig {
    uint32_t outputLatencyBytes = 0;  // rounded down to whole frames
    uint32_t inputLatencyBytes = 0;
    double speed = 1.0;  // virtual seconds per real second
    float loopbackGain = 1.0f;
    // Interleaved stereo; frame i is sung as output frame i is heard, the way
    // a singer follows the accompaniment.
    std::vector<int16_t> voice = {};
    // In order of position; every output opened stands still at each.
    std::vector<VirtualStall> outputStalls = {};
    std::vector<VirtualPositionLag> outputPositionLags = {};
    bool failOutputOpen = false;
    bool failInputOpen = false;
};

class VirtualAudio final : public AudioBackend {
  public:
    struct World;

    explicit VirtualAudio(VirtualAudioConfig config = {});
    ~VirtualAudio() override;

    std::string name() const override { return "virtual"; }
    std::unique_ptr<OutputDevice> makeOutput() override;
    std::unique_ptr<InputDevice> makeInput() override;
    uint32_t outputDeviceCount() override { return 1; }
    uint32_t inputDeviceCount() override { return 1; }
    std::string devicePair() override { return "virtual output -> virtual input"; }

    // Faults: a device that keeps time but no longer hands buffers back
    // (reset still returns them), and a clock that stands still.
    void setOutputHangs(bool hangs);
    void setInputHangs(bool hangs);
    // Takes effect before it returns: no step runs until the clock is freed.
    void setClockStalled(bool stalled);
    // Frames simulated so far.
    uint64_t frameNow() const;

  private:
    void simulate();

    VirtualClock& clock_;
    std::shared_ptr<World> world_;
    std::atomic<bool> quitting_{false};
    std::thread thread_;
};

// Reads TUNEBOX_VIRTUAL_OUTPUT_LATENCY, TUNEBOX_VIRTUAL_INPUT_LATENCY (bytes),
// TUNEBOX_VIRTUAL_LOOPBACK (gain) and TUNEBOX_VIRTUAL_SPEED; unset or
// unreadable values keep the defaults.
VirtualAudioConfig virtualAudioConfigFromEnvironment();

}  // namespace tunebox
