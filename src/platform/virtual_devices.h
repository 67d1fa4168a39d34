#pragma once
// The simulated output and input devices a VirtualAudio backend hands out;
// the simulation thread steps their state in the shared world.

#include <memory>

#include "platform/audio_device.h"
#include "platform/virtual_audio.h"

namespace tunebox {

std::unique_ptr<OutputDevice> makeVirtualOutput(std::shared_ptr<VirtualAudio::World> world);
std::unique_ptr<InputDevice> makeVirtualInput(std::shared_ptr<VirtualAudio::World> world);

}  // namespace tunebox
