#include <cmath>
#include <iostream>
#include <memory>
#include <optional>

#include "app/cli/commands.h"
#include "app/cli/key_tempo_options.h"
#include "app/cli/lyric_prompt.h"
#include "app/cli/overwrite_option.h"
#include "app/cli/song_files.h"
#include "app/cli/start_option.h"
#include "app/cli/take_loop.h"
#include "core/wave_format.h"
#include "platform/settings.h"
#include "playback/wav_length.h"
#include "session/delay_text.h"

namespace tunebox::cli {
namespace {

struct RecordArguments {
    std::string accompaniment;
    std::string lyrics;
    std::string output;
    std::optional<int32_t> manualDelay;
    bool noEcho = false;
    double startSeconds = 0.0;
    bool overwrite = false;
    bool noVoiceFile = false;
    KeyTempo keyTempo;
};

RecordingOptions optionsFrom(const RecordArguments& arguments, const std::string& accompaniment) {
    RecordingOptions options;
    options.accompaniment = accompaniment;
    options.output = arguments.output;
    options.echo = arguments.noEcho ? 0 : 1;
    options.overwrite = arguments.overwrite;
    options.keyTempo = arguments.keyTempo;
    options.voiceFile = !arguments.noVoiceFile && readVoiceFileChoice() == 1;
    options.startBytes =
        static_cast<uint32_t>(std::llround(arguments.startSeconds * kNativeSampleRate)) *
        kNativeFrameBytes;
    if (arguments.manualDelay) {
        options.manualFlag = 1;
        options.manualDelay = *arguments.manualDelay;
    } else {
        SyncSettings settings;
        readSyncSettings(settings);
        options.manualFlag = settings.manualDelayFlag == 1 ? 1 : 0;
        options.manualDelay = options.manualFlag ? parseDelayText(settings.manualDelayText) : 0;
    }
    return options;
}

int record(const RecordArguments& arguments) {
    const InterruptFlag interrupt;
    // An UltraStar song sung over plays its audio file; the lyrics are chosen
    // (or refused) before anything starts, and only ever shown.
    std::optional<SongFiles> files = SongFiles{};
    std::optional<LyricPrompt> lyrics;
    if (!arguments.accompaniment.empty()) {
        files = songFiles(arguments.accompaniment, arguments.lyrics);
        if (!files || !openLyricPrompt(*files, lyrics)) {
            return kExitBadInput;
        }
    }
    const std::shared_ptr<AudioBackend> backend = makeAudioBackendFromEnvironment();
    CommandLineTake take(*backend);
    if (!take.rec(optionsFrom(arguments, files->audio))) {
        std::cerr << "tunebox: " << take.error() << '\n';
        return kExitBadInput;
    }
    if (!take.delayNote().empty()) {
        std::cout << "tunebox: " << take.delayNote() << std::endl;
    }
    const int status =
        runTake(take, !arguments.accompaniment.empty(), interrupt, lyrics ? &*lyrics : nullptr);
    uint32_t length = 0;
    if (wavGetLength(arguments.output, length) == 1) {
        std::cout << arguments.output << ": " << formatSectorTime(length) << " recorded";
        if (!arguments.accompaniment.empty()) {
            std::cout << ", delay " << take.capture().syncMx().alignedDelay() << " bytes";
        }
        std::cout << ", " << lostCaptureBlocks() << " capture blocks lost";
        if (!arguments.accompaniment.empty()) {
            std::cout << ", " << take.capture().syncMx().outputStalls() << " playback underruns";
        }
        std::cout << ", " << take.capture().clippedBlocks() << " blocks clipped\n";
    }
    // Said last, where a singer looks: the take needs another go or a remix.
    if (!take.syncNote().empty()) {
        std::cerr << "tunebox: the take is " << take.syncNote()
                  << " (the playback stalled and the gap could not be placed)\n";
    }
    // A take cut short by a fault has said so, and its voice file stopped with it.
    if (!take.capture().voiceFileError().empty() && take.capture().fault() == CaptureFault::kNone) {
        std::cerr << "tunebox: " << take.capture().voiceFileError() << '\n';
    }
    return status;
}

}  // namespace

void registerRecordCommand(CLI::App& app, int& status) {
    auto* command =
        app.add_subcommand("record", "Record the voice over an accompaniment (Ctrl-C stops)");
    auto arguments = std::make_shared<RecordArguments>();
    auto* accompaniment = command->add_option(
        "--accompaniment", arguments->accompaniment,
        "Audio file (WAV, MP3, FLAC, Ogg, ...) or UltraStar .txt to sing over; without it the "
        "voice is recorded alone");
    command
        ->add_option("--lyrics", arguments->lyrics,
                     "The lyrics to show (.lrc or UltraStar .txt); by default the one beside the "
                     "accompaniment under the same name")
        ->needs(accompaniment);
    command->add_option("--output", arguments->output, "The take, a WAV file")->required();
    command->add_option("--manual-delay", arguments->manualDelay,
                        "Voice bytes to drop instead of the measured delay");
    command->add_flag("--no-echo", arguments->noEcho, "Record the voice without the echo");
    addStartOption(*command, arguments->startSeconds, "Where the accompaniment starts");
    command->add_flag("--no-voice-file", arguments->noVoiceFile,
                      "Do not write the voice alone beside the take (TAKE.voice.wav)");
    addKeyTempoOptions(*command, arguments->keyTempo);
    addOverwriteOption(*command, arguments->overwrite);
    command->callback([&status, arguments] { status = record(*arguments); });
}

}  // namespace tunebox::cli
