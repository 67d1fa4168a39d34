#include "platform/audio_backend.h"

#include <cstdlib>
#include <string_view>

#include "platform/pulse_audio.h"
#include "platform/unavailable_audio.h"
#include "platform/virtual_audio.h"

namespace tunebox {
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

}  // namespace tunebox
