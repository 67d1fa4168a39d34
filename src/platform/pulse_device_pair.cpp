// The server's default sink and source by name, with the rate each runs at:
// what a calibration of the round trip between them belongs to.

#include <string>

#include "platform/pulse_audio.h"
#include "platform/pulse_connection.h"

namespace tunebox {
namespace {

struct DefaultNames {
    std::string sink;
    std::string source;
};

void onServerInfo(pa_context*, const pa_server_info* info, void* names) {
    if (info != nullptr) {
        auto& defaults = *static_cast<DefaultNames*>(names);
        defaults.sink = info->default_sink_name ? info->default_sink_name : "";
        defaults.source = info->default_source_name ? info->default_source_name : "";
    }
}

template <class Info>
void onDeviceInfo(pa_context*, const Info* info, int endOfList, void* described) {
    if (endOfList == 0 && info != nullptr) {
        *static_cast<std::string*>(described) =
            std::string(info->name) + " (" + std::to_string(info->sample_spec.rate) + " Hz)";
    }
}

}  // namespace

std::string PulseAudio::devicePair() {
    PulseConnection connection;
    if (!connection.connect(server_, "Tunebox device names")) {
        return {};
    }
    PulseConnection::Lock lock(connection);
    pa_context* context = connection.context();
    DefaultNames defaults;
    if (!connection.finish(pa_context_get_server_info(context, onServerInfo, &defaults),
                           kPulseTimeout)) {
        return {};
    }
    std::string output;
    std::string input;
    const bool described =
        connection.finish(pa_context_get_sink_info_by_name(context, defaults.sink.c_str(),
                                                           onDeviceInfo<pa_sink_info>, &output),
                          kPulseTimeout) &&
        connection.finish(pa_context_get_source_info_by_name(context, defaults.source.c_str(),
                                                             onDeviceInfo<pa_source_info>, &input),
                          kPulseTimeout);
    return described && !output.empty() && !input.empty() ? output + " -> " + input : "";
}

}  // namespace tunebox
