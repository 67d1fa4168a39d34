#pragma once
// Devices on the PulseAudio server (PipeWire serves the same client API).
// Positions come from the server's timing information (stream time with
// interpolation, less the sink latency at the output, plus the source
// latency at the input), so they count what was heard and captured at the
// converters, not what was handed over.

#include <string>

#include "platform/audio_backend.h"

namespace tunebox {

class PulseAudio final : public AudioBackend {
  public:
    // `server` empty: the environment's default server.
    explicit PulseAudio(std::string server = {});

    std::string name() const override { return "pulse"; }
    std::unique_ptr<OutputDevice> makeOutput() override;
    std::unique_ptr<InputDevice> makeInput() override;
    uint32_t outputDeviceCount() override;
    uint32_t inputDeviceCount() override;
    std::string devicePair() override;

  private:
    std::string server_;
};

}  // namespace tunebox
