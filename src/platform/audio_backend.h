#pragma once
// Where devices and timers come from. A front end makes one and hands it to
// the engines it drives; TUNEBOX_AUDIO chooses it: unset or "pulse" for the
// sound server, "virtual" for the simulated devices. A backend that cannot play says so through its
// devices' results; nothing falls back to the simulation on its own.

#include <cstdint>
#include <memory>
#include <string>

#include "platform/audio_device.h"
#include "platform/clock.h"
#include "platform/periodic_timer.h"

namespace tunebox {

class AudioBackend {
  public:
    explicit AudioBackend(std::unique_ptr<Clock> clock)
        : clock_(std::move(clock)), timers_(*clock_) {}
    virtual ~AudioBackend() = default;
    AudioBackend(const AudioBackend&) = delete;
    AudioBackend& operator=(const AudioBackend&) = delete;

    virtual std::string name() const = 0;
    virtual std::unique_ptr<OutputDevice> makeOutput() = 0;
    virtual std::unique_ptr<InputDevice> makeInput() = 0;
    virtual uint32_t outputDeviceCount() = 0;
    virtual uint32_t inputDeviceCount() = 0;
    // The default output and input as the system names them, with the rate
    // each runs at, e.g. "speakers (48000 Hz) -> microphone (48000 Hz)": what
    // a calibration belongs to. Empty when they cannot be named.
    virtual std::string devicePair() = 0;
    // Periodic events on the same clock as the devices.
    TimerService& timers() { return timers_; }
    Clock& clock() { return *clock_; }

  private:
    std::unique_ptr<Clock> clock_;
    TimerService timers_;
};

// Builds the backend TUNEBOX_AUDIO names; an unknown name gives a backend
// whose devices refuse to open with a message naming it.
std::shared_ptr<AudioBackend> makeAudioBackendFromEnvironment();

}  // namespace tunebox
