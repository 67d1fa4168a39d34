#include "platform/unavailable_audio.h"

namespace tunebox {
namespace {

template <class Interface>
class UnavailableDevice : public Interface {
  public:
    explicit UnavailableDevice(std::string reason) : reason_(std::move(reason)) {}

    AudioResult open(const WaveFormat&, DeviceDoneCallback) override { return kAudioNoDriver; }
    AudioResult prepare(WaveHeader&) override { return kAudioBadDevice; }
    AudioResult unprepare(WaveHeader&) override { return kAudioBadDevice; }
    AudioResult reset() override { return kAudioBadDevice; }
    AudioResult close() override { return kAudioBadDevice; }
    AudioResult position(uint32_t& bytes) override {
        bytes = 0;
        return kAudioBadDevice;
    }
    std::string lastError() const override { return reason_; }

  private:
    std::string reason_;
};

class UnavailableOutput final : public UnavailableDevice<OutputDevice> {
  public:
    using UnavailableDevice::UnavailableDevice;
    AudioResult write(WaveHeader&) override { return kAudioBadDevice; }
    AudioResult pause() override { return kAudioBadDevice; }
    AudioResult restart() override { return kAudioBadDevice; }
};

class UnavailableInput final : public UnavailableDevice<InputDevice> {
  public:
    using UnavailableDevice::UnavailableDevice;
    AudioResult addBuffer(WaveHeader&) override { return kAudioBadDevice; }
    AudioResult start() override { return kAudioBadDevice; }
    AudioResult stop() override { return kAudioBadDevice; }
};

}  // namespace

UnavailableAudio::UnavailableAudio(std::string reason)
    : AudioBackend(std::make_unique<SteadyClock>()), reason_(std::move(reason)) {}

std::unique_ptr<OutputDevice> UnavailableAudio::makeOutput() {
    return std::make_unique<UnavailableOutput>(reason_);
}

std::unique_ptr<InputDevice> UnavailableAudio::makeInput() {
    return std::make_unique<UnavailableInput>(reason_);
}

}  // namespace tunebox
