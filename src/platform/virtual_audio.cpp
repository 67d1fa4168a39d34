#include "platform/virtual_audio.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <mutex>
#include <optional>

#include "platform/virtual_devices.h"
#include "platform/virtual_world.h"

namespace tunebox {
namespace {

constexpr uint32_t kStepFrames = 441;  // 10 ms

int16_t clip(float value) {
    return static_cast<int16_t>(std::clamp(std::lround(value), -32768l, 32767l));
}

// One frame of the air: every output, the loopback gain and the voice.
AirFrame mixAir(VirtualAudio::World& world) {
    float left = 0.0f;
    float right = 0.0f;
    bool heard = false;
    for (VirtualOutputState* output : world.outputs) {
        const AirFrame frame = output->step(world.outputHangs);
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
    return makeVirtualOutput(world_);
}

std::unique_ptr<InputDevice> VirtualAudio::makeInput() {
    return makeVirtualInput(world_);
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
        std::chrono::duration<double>(double(kStepFrames) / kVirtualFramesPerSecond / speed));
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
                const AirFrame air = mixAir(*world_);
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
    if (auto value = environmentNumber("TUNEBOX_VIRTUAL_LOOPBACK")) {
        config.loopbackGain = static_cast<float>(std::min(*value, 100.0));
    }
    if (auto value = environmentNumber("TUNEBOX_VIRTUAL_SPEED"); value && *value > 0) {
        config.speed = *value;
    }
    return config;
}

}  // namespace tunebox
