#include "platform/virtual_devices.h"

#include <algorithm>
#include <string>
#include <type_traits>

#include "platform/virtual_world.h"

namespace tunebox {
namespace {

AudioResult checkNativeFormat(const WaveFormat& format) {
    return sameFormat(format, kNativeFormat) ? kAudioOk : kAudioBadFormat;
}

// What both simulated devices do the same way: open and close against the
// world, and the header calls that need no simulation.
template <class Interface, class State>
class VirtualDevice : public Interface {
  public:
    explicit VirtualDevice(std::shared_ptr<VirtualAudio::World> world) : world_(std::move(world)) {}
    ~VirtualDevice() override {
        if (state_) {
            reset();
            close();
        }
    }

    AudioResult prepare(WaveHeader& header) override { return prepareHeader(header); }
    AudioResult unprepare(WaveHeader& header) override { return unprepareHeader(header); }
    std::string lastError() const override { return lastError_; }

    AudioResult close() override {
        std::unique_ptr<State> closing;
        {
            std::lock_guard lock(world_->mutex);
            if (!state_) {
                return kAudioBadDevice;
            }
            if (state_->busy()) {
                return kAudioStillPlaying;
            }
            states().erase(state_.get());
            closing = std::move(state_);
        }
        return kAudioOk;  // the delivery thread ends with `closing`
    }

    AudioResult reset() override {
        return withState([](State& state) { state.reset(); });
    }

  protected:
    template <class... Extra>
    AudioResult openState(const WaveFormat& format, bool fails, uint32_t latencyBytes,
                          DeviceDoneCallback onDone, Extra... extra) {
        if (state_) {
            return kAudioError;
        }
        if (fails) {
            lastError_ = "the virtual audio device refused to open (injected fault)";
            return kAudioNoDriver;
        }
        if (const AudioResult result = checkNativeFormat(format); result != kAudioOk) {
            lastError_ = std::string(audioResultText(result));
            return result;
        }
        auto state = std::make_unique<State>(latencyBytes, std::move(extra)..., std::move(onDone));
        std::lock_guard lock(world_->mutex);
        states().insert(state.get());
        state_ = std::move(state);
        return kAudioOk;
    }

    template <class Action>
    AudioResult withState(Action action) {
        std::lock_guard lock(world_->mutex);
        if (!state_) {
            return kAudioBadDevice;
        }
        if constexpr (std::is_same_v<decltype(action(*state_)), AudioResult>) {
            return action(*state_);
        } else {
            action(*state_);
            return kAudioOk;
        }
    }

    VirtualAudio::World& world() { return *world_; }

  private:
    std::set<State*>& states() {
        if constexpr (std::is_same_v<State, VirtualOutputState>) {
            return world_->outputs;
        } else {
            return world_->inputs;
        }
    }

    std::shared_ptr<VirtualAudio::World> world_;
    std::unique_ptr<State> state_;
    std::string lastError_;
};

class VirtualOutput final : public VirtualDevice<OutputDevice, VirtualOutputState> {
  public:
    using VirtualDevice::VirtualDevice;

    AudioResult open(const WaveFormat& format, DeviceDoneCallback onDone) override {
        const auto& config = world().config;
        return openState(format, config.failOutputOpen, config.outputLatencyBytes,
                         std::move(onDone), config.outputStalls);
    }
    AudioResult write(WaveHeader& header) override {
        return withState([&](VirtualOutputState& state) { return state.write(header); });
    }
    AudioResult pause() override {
        return withState([](VirtualOutputState& state) { state.setPaused(true); });
    }
    AudioResult restart() override {
        return withState([](VirtualOutputState& state) { state.setPaused(false); });
    }
    AudioResult position(uint32_t& bytes) override {
        const auto& lags = world().config.outputPositionLags;
        return withState([&](VirtualOutputState& state) {
            bytes = static_cast<uint32_t>(state.heard());
            for (const VirtualPositionLag& lag : lags) {
                if (bytes >= lag.fromBytes && bytes < lag.untilBytes) {
                    bytes -= std::min(bytes, lag.bytes);
                }
            }
        });
    }
    OutputStalls stalls(uint32_t first) override {
        OutputStalls found;
        withState([&](VirtualOutputState& state) { found = state.stalls(first); });
        return found;
    }
};

class VirtualInput final : public VirtualDevice<InputDevice, VirtualInputState> {
  public:
    using VirtualDevice::VirtualDevice;

    AudioResult open(const WaveFormat& format, DeviceDoneCallback onDone) override {
        const auto& config = world().config;
        return openState(format, config.failInputOpen, config.inputLatencyBytes, std::move(onDone));
    }
    AudioResult addBuffer(WaveHeader& header) override {
        return withState([&](VirtualInputState& state) { return state.addBuffer(header); });
    }
    AudioResult start() override {
        return withState(
            [this](VirtualInputState& state) { state.setStarted(true, world().frame); });
    }
    AudioResult stop() override {
        return withState(
            [this](VirtualInputState& state) { state.setStarted(false, world().frame); });
    }
    AudioResult position(uint32_t& bytes) override {
        return withState(
            [&](VirtualInputState& state) { bytes = static_cast<uint32_t>(state.captured()); });
    }
};

}  // namespace

std::unique_ptr<OutputDevice> makeVirtualOutput(std::shared_ptr<VirtualAudio::World> world) {
    return std::make_unique<VirtualOutput>(std::move(world));
}

std::unique_ptr<InputDevice> makeVirtualInput(std::shared_ptr<VirtualAudio::World> world) {
    return std::make_unique<VirtualInput>(std::move(world));
}

}  // namespace tunebox
