#include "platform/audio_backend.h"

#include <cstdlib>
#include <mutex>
#include <string_view>

#include "platform/pulse_audio.h"
#include "platform/unavailable_audio.h"
#include "platform/virtual_audio.h"

namespace tunebox {
namespace {

std::mutex backendMutex;
std::shared_ptr<AudioBackend> installedBackend;

}  // namespace

std::shared_ptr<AudioBackend> makeAudioBackendFromEnvironment() {
    const char* chosen = std::getenv("TUNEBOX_AUDIO");
    const std::string_view name = chosen ? chosen : "";
    if (name.empty() || name == "pulse") {
        return std::make_shared<PulseAudio>();
    }
    if (name == "virtual") {
        return std::make_shared<VirtualAudio>(virtualAudioConfigFromEnvironment());
    }
    return std::make_shared<UnavailableAudio>("unknown audio backend in TUNEBOX_AUDIO: \"" +
                                              std::string(name) +
                                              "\" (use \"pulse\" or \"virtual\")");
}

AudioBackend& audioBackend() {
    std::lock_guard lock(backendMutex);
    if (!installedBackend) {
        installedBackend = makeAudioBackendFromEnvironment();
    }
    return *installedBackend;
}

void setAudioBackend(std::shared_ptr<AudioBackend> backend) {
    std::lock_guard lock(backendMutex);
    installedBackend = std::move(backend);
}

}  // namespace tunebox
