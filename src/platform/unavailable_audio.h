#pragma once
// A backend with no devices: every open fails with the reason it was made
// with, so a wrong TUNEBOX_AUDIO is reported instead of played somewhere else.

#include <string>

#include "platform/audio_backend.h"

namespace tunebox {

class UnavailableAudio final : public AudioBackend {
  public:
    explicit UnavailableAudio(std::string reason);

    std::string name() const override { return "none"; }
    std::unique_ptr<OutputDevice> makeOutput() override;
    std::unique_ptr<InputDevice> makeInput() override;
    uint32_t outputDeviceCount() override { return 0; }
    std::string devicePair() override { return {}; }
    uint32_t inputDeviceCount() override { return 0; }

  private:
    std::string reason_;
};

}  // namespace tunebox
