#include <filesystem>
#include <iostream>
#include <memory>

#include "app/cli/commands.h"
#include "app/cli/demo_tune_file.h"
#include "app/cli/input_checks.h"
#include "app/cli/overwrite_option.h"
#include "app/cli/take_loop.h"
#include "core/wave_format.h"
#include "platform/virtual_audio.h"
#include "playback/wav_length.h"
#include "session/demo_tune.h"
#include "session/synthetic_voice.h"

namespace tunebox::cli {
namespace {

constexpr uint32_t kVoiceSpareSeconds = 4;  // sung on while the stop drains

// The default devices when a sound server answers; otherwise (or when the
// virtual backend was asked for) the simulated loopback, where a synthetic
// singer follows the accompaniment and the microphone hears only the voice.
std::shared_ptr<AudioBackend> chooseDevices() {
    std::shared_ptr<AudioBackend> backend = makeAudioBackendFromEnvironment();
    const bool virtualAsked = backend->name() == "virtual";
    if (!virtualAsked && backend->outputDeviceCount() > 0 && backend->inputDeviceCount() > 0) {
        std::cout << "devices: the default output and input of the sound server ("
                  << backend->name() << ")\n";
        return backend;
    }
    if (!virtualAsked) {
        std::cout << "no sound server could be reached\n";
    }
    VirtualAudioConfig config = virtualAudioConfigFromEnvironment();
    config.voice = synthesiseVoice((kDemoTuneSeconds + kVoiceSpareSeconds) * kNativeSampleRate);
    config.loopbackGain = 0.0f;
    std::cout << "devices: the virtual loopback (a synthetic voice over the accompaniment)\n";
    return std::make_shared<VirtualAudio>(std::move(config));
}

struct DemoOptions {
    std::string output = "demo-take.wav";
    bool overwrite = false;
};

int demo(const DemoOptions& options) {
    const InterruptFlag interrupt;
    const std::string& output = options.output;
    // Refused before the demo tune beside it is written.
    if (const auto problem = overwriteRefusal(output, options.overwrite)) {
        return refuse(output, *problem, kExitBadInput);
    }
    const std::filesystem::path tune =
        std::filesystem::path(output).parent_path() / "demo-tune.wav";
    if (const int status = writeDemoTuneFile(tune.string()); status != 0) {
        return status;
    }
    const std::shared_ptr<AudioBackend> backend = chooseDevices();
    CommandLineTake take(*backend);
    RecordingOptions recording;
    recording.accompaniment = tune.string();
    recording.output = output;
    recording.overwrite = options.overwrite;
    if (!take.rec(recording)) {
        std::cerr << "tunebox: " << take.error() << '\n';
        return kExitBadInput;
    }
    const int status = runTake(take, true, interrupt);
    uint32_t length = 0;
    if (wavGetLength(output, length) == 1) {
        std::cout << output << ": the take, " << formatSectorTime(length) << ", delay "
                  << take.capture().syncMx().alignedDelay() << " bytes\n";
    }
    return status;
}

}  // namespace

void registerDemoCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand(
        "demo", "Record a take over the demo accompaniment with the default devices");
    auto options = std::make_shared<DemoOptions>();
    command->add_option("--output", options->output,
                        "The take, a WAV file (demo-tune.wav goes beside it)");
    addOverwriteOption(*command, options->overwrite);
    command->callback([&status, options] { status = demo(*options); });
}

}  // namespace tunebox::cli
