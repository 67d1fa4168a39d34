#pragma once
// What the simulated devices share with the simulation thread: the
// configuration, the virtual frame count, the injected faults and the open
// devices. Every field is guarded by the mutex.

#include <cstdint>
#include <mutex>
#include <set>

#include "platform/virtual_audio.h"
#include "platform/virtual_input_state.h"
#include "platform/virtual_output_state.h"

namespace tunebox {

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

}  // namespace tunebox
