#include "platform/virtual_audio.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <mutex>
#include <optional>
#include <set>

#include "platform/device_buffers.h"

namespace tunebox {
namespace {

constexpr uint32_t kFramesPerSecond = 44100;
constexpr uint32_t kFrameBytes = 4;
constexpr uint32_t kStepFrames = 441;  // 10 ms

struct Frame {
    int16_t left = 0;
    int16_t right = 0;
    uint32_t realBytes = 0;  // 0 for the silence the device plays when starved
};

Clock::Duration timeOfFrame(uint64_t frame) {
    return Clock::Duration(static_cast<int64_t>(frame * 1'000'000'000ull / kFramesPerSecond));
}

int16_t clip(float value) {
    return static_cast<int16_t>(std::clamp(std::lround(value), -32768l, 32767l));
}

int16_t sampleAt(const uint8_t* bytes) {
    return static_cast<int16_t>(static_cast<uint16_t>(bytes[0] | (bytes[1] << 8)));
}

}  // namespace

class VirtualOutputState;
class VirtualInputState;

struct VirtualAudio::World {
    explicit World(VirtualAudioConfig settings) : config(std::move(settings)) {}

    std::mutex mutex;
    VirtualAudioConfig config;
    uint64_t frame = 0;
    uint64_t voiceFrame = 0;
    bool outputHangs = false;
    bool inputHangs = false;
    bool stalled = false;
    std::set<VirtualOutputState*> outputs;
    std::set<VirtualInputState*> inputs;
};

namespace {

AudioResult checkNativeFormat(const WaveFormat& format) {
    return sameFormat(format, kNativeFormat) ? kAudioOk : kAudioBadFormat;
}

}  // namespace

// The part of a simulated output that the simulation thread steps, guarded
// by the world's mutex.
class VirtualOutputState {
  public:
    VirtualOutputState(uint32_t latencyBytes, DeviceDoneCallback onDone)
        : pipeline_(latencyBytes / kFrameBytes), delivery_(std::move(onDone)) {}

    AudioResult write(WaveHeader& header) {
        const AudioResult result = enqueueHeader(header);
        if (result == kAudioOk) {
            written_ += header.bufferLength;
            queued_.push_back({&header, written_});
        }
        return result;
    }
    void setPaused(bool paused) { paused_ = paused; }
    bool busy() const { return !queued_.empty(); }
    uint64_t heard() const { return heard_; }

    void reset() {
        for (const Queued& entry : queued_) {
            delivery_.deliver(*entry.header);
        }
        queued_.clear();
        written_ = taken_ = heard_ = 0;
        takeIndex_ = takeOffset_ = 0;
        std::fill(pipeline_.begin(), pipeline_.end(), Frame{});
    }

    // One frame of time: returns what reaches the air.
    Frame step(bool hangs) {
        if (paused_) {
            return {};
        }
        Frame out = take();
        if (!pipeline_.empty()) {
            std::swap(out, pipeline_[pipelineAt_]);
            pipelineAt_ = (pipelineAt_ + 1) % pipeline_.size();
        }
        heard_ += out.realBytes;
        if (!hangs) {
            returnHeard();
        }
        return out;
    }

  private:
    struct Queued {
        WaveHeader* header;
        uint64_t end;  // stream offset just past its data
    };

    Frame take() {
        uint8_t bytes[kFrameBytes] = {};
        uint32_t count = 0;
        while (count < kFrameBytes && takeIndex_ < queued_.size()) {
            const WaveHeader& header = *queued_[takeIndex_].header;
            if (takeOffset_ >= header.bufferLength) {
                ++takeIndex_;
                takeOffset_ = 0;
                continue;
            }
            bytes[count++] = header.data[takeOffset_++];
        }
        taken_ += count;
        return {sampleAt(bytes), sampleAt(bytes + 2), count};
    }

    void returnHeard() {
        while (!queued_.empty() && queued_.front().end <= heard_ && takeIndex_ > 0) {
            delivery_.deliver(*queued_.front().header);
            queued_.pop_front();
            --takeIndex_;
        }
    }

    std::deque<Queued> queued_;
    std::size_t takeIndex_ = 0;
    uint32_t takeOffset_ = 0;
    uint64_t written_ = 0;
    uint64_t taken_ = 0;
    uint64_t heard_ = 0;
    bool paused_ = false;
    std::vector<Frame> pipeline_;
    std::size_t pipelineAt_ = 0;
    DoneDelivery delivery_;
};

class VirtualInputState {
  public:
    VirtualInputState(uint32_t latencyBytes, DeviceDoneCallback onDone)
        : latencyFrames_(latencyBytes / kFrameBytes), delivery_(std::move(onDone)) {}

    AudioResult addBuffer(WaveHeader& header) {
        const AudioResult result = enqueueHeader(header);
        if (result == kAudioOk) {
            header.bytesRecorded = 0;
            queued_.push_back(&header);
        }
        return result;
    }
    void setStarted(bool started, uint64_t frame) {
        if (started_ && !started && !queued_.empty() && queued_.front()->bytesRecorded > 0) {
            finishFront(frame);
        }
        started_ = started;
    }
    bool busy() const { return !queued_.empty() || !returning_.empty(); }
    uint64_t captured() const { return captured_; }

    void reset() {
        started_ = false;
        for (const Returning& entry : returning_) {
            delivery_.deliver(*entry.header);
        }
        returning_.clear();
        for (WaveHeader* header : queued_) {
            delivery_.deliver(*header);
        }
        queued_.clear();
        captured_ = 0;
    }

    void step(const Frame& air, uint64_t frame, bool hangs) {
        if (started_) {
            uint8_t bytes[kFrameBytes] = {
                static_cast<uint8_t>(air.left), static_cast<uint8_t>(air.left >> 8),
                static_cast<uint8_t>(air.right), static_cast<uint8_t>(air.right >> 8)};
            for (uint8_t byte : bytes) {
                store(byte, frame);
            }
            captured_ += kFrameBytes;
        }
        while (!hangs && !returning_.empty() && returning_.front().due <= frame) {
            delivery_.deliver(*returning_.front().header);
            returning_.pop_front();
        }
    }

  private:
    struct Returning {
        WaveHeader* header;
        uint64_t due;
    };

    // A byte with no buffer to take it is lost, as at a real converter.
    void store(uint8_t byte, uint64_t frame) {
        if (queued_.empty()) {
            return;
        }
        WaveHeader& header = *queued_.front();
        if (header.bytesRecorded < header.bufferLength) {
            header.data[header.bytesRecorded++] = byte;
        }
        if (header.bytesRecorded >= header.bufferLength) {
            finishFront(frame);
        }
    }

    void finishFront(uint64_t frame) {
        returning_.push_back({queued_.front(), frame + latencyFrames_});
        queued_.pop_front();
    }

    const uint64_t latencyFrames_;
    std::deque<WaveHeader*> queued_;
    std::deque<Returning> returning_;
    uint64_t captured_ = 0;
    bool started_ = false;
    DoneDelivery delivery_;
};

namespace {

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
    AudioResult openState(const WaveFormat& format, bool fails, uint32_t latencyBytes,
                          DeviceDoneCallback onDone) {
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
        auto state = std::make_unique<State>(latencyBytes, std::move(onDone));
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
                         std::move(onDone));
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
        return withState(
            [&](VirtualOutputState& state) { bytes = static_cast<uint32_t>(state.heard()); });
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

// One frame of the air: every output, the loopback gain and the voice.
Frame mixAir(VirtualAudio::World& world) {
    float left = 0.0f;
    float right = 0.0f;
    bool heard = false;
    for (VirtualOutputState* output : world.outputs) {
        const Frame frame = output->step(world.outputHangs);
        left += frame.left * world.config.loopbackGain;
        right += frame.right * world.config.loopbackGain;
        heard = heard || frame.realBytes > 0;
    }
    const auto& voice = world.config.voice;
    if (heard && (world.voiceFrame + 1) * 2 <= voice.size()) {
        left += voice[world.voiceFrame * 2];
        right += voice[world.voiceFrame * 2 + 1];
    }
    world.voiceFrame += heard ? 1 : 0;
    return {clip(left), clip(right), 0};
}

}  // namespace

VirtualAudio::VirtualAudio(VirtualAudioConfig config)
    : AudioBackend(std::make_unique<VirtualClock>()),
      clock_(static_cast<VirtualClock&>(clock())),
      world_(std::make_shared<World>(std::move(config))),
      thread_([this] { simulate(); }) {}

VirtualAudio::~VirtualAudio() {
    quitting_ = true;
    thread_.join();
}

std::unique_ptr<OutputDevice> VirtualAudio::makeOutput() {
    return std::make_unique<VirtualOutput>(world_);
}

std::unique_ptr<InputDevice> VirtualAudio::makeInput() {
    return std::make_unique<VirtualInput>(world_);
}

void VirtualAudio::setOutputHangs(bool hangs) {
    std::lock_guard lock(world_->mutex);
    world_->outputHangs = hangs;
}

void VirtualAudio::setInputHangs(bool hangs) {
    std::lock_guard lock(world_->mutex);
    world_->inputHangs = hangs;
}

void VirtualAudio::setClockStalled(bool stalled) {
    std::lock_guard lock(world_->mutex);
    world_->stalled = stalled;
}

uint64_t VirtualAudio::frameNow() const {
    std::lock_guard lock(world_->mutex);
    return world_->frame;
}

void VirtualAudio::simulate() {
    const double speed = world_->config.speed > 0 ? world_->config.speed : 1.0;
    const auto stepReal = std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(double(kStepFrames) / kFramesPerSecond / speed));
    auto nextStep = std::chrono::steady_clock::now();
    while (!quitting_) {
        nextStep += stepReal;
        std::this_thread::sleep_until(nextStep);
        uint64_t frame = 0;
        {
            std::lock_guard lock(world_->mutex);
            if (world_->stalled) {
                nextStep = std::chrono::steady_clock::now();
                continue;
            }
            for (uint32_t i = 0; i < kStepFrames; ++i) {
                const Frame air = mixAir(*world_);
                ++world_->frame;
                for (VirtualInputState* input : world_->inputs) {
                    input->step(air, world_->frame, world_->inputHangs);
                }
            }
            frame = world_->frame;
        }
        clock_.advanceTo(timeOfFrame(frame));
    }
}

namespace {

std::optional<double> environmentNumber(const char* name) {
    const char* text = std::getenv(name);
    if (text == nullptr || *text == '\0') {
        return std::nullopt;
    }
    char* end = nullptr;
    const double value = std::strtod(text, &end);
    if (*end != '\0' || !std::isfinite(value) || value < 0) {
        return std::nullopt;
    }
    return value;
}

}  // namespace

VirtualAudioConfig virtualAudioConfigFromEnvironment() {
    VirtualAudioConfig config;
    if (auto value = environmentNumber("TUNEBOX_VIRTUAL_OUTPUT_LATENCY")) {
        config.outputLatencyBytes = static_cast<uint32_t>(std::min(*value, 1e9));
    }
    if (auto value = environmentNumber("TUNEBOX_VIRTUAL_INPUT_LATENCY")) {
        config.inputLatencyBytes = static_cast<uint32_t>(std::min(*value, 1e9));
    }
    if (auto value = environmentNumber("TUNEBOX_VIRTUAL_SPEED"); value && *value > 0) {
        config.speed = *value;
    }
    return config;
}

}  // namespace tunebox
