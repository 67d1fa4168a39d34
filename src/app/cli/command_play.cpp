#include <unistd.h>

#include <cmath>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "app/cli/commands.h"
#include "app/cli/input_checks.h"
#include "app/cli/interrupt_flag.h"
#include "app/cli/key_tempo_options.h"
#include "app/cli/lyric_prompt.h"
#include "app/cli/play_progress.h"
#include "app/cli/song_files.h"
#include "app/cli/source_settings.h"
#include "app/cli/start_option.h"
#include "app/cli/terminal_keys.h"
#include "core/playback_clock.h"
#include "playback/wav_length.h"
#include "playback/wav_refusal.h"
#include "playback/wave_ctl.h"
#include "session/track_list.h"

namespace tunebox::cli {
namespace {

struct PlayOptions {
    std::string path;
    double startSeconds = 0;
    bool echo = false;
    std::string lyrics;
    KeyTempo keyTempo;
};

// The lyrics are looked at this often, so that a line changes within a
// turn of when it is heard; the clock is rewritten every few turns.
constexpr auto kTurn = std::chrono::milliseconds(20);
constexpr int kTurnsPerClock = 5;

// The track's preset as the dialog plays it, with the echo only when asked.
// A plain player, not the recorder's: nothing takes copies of its blocks.
void initAsTrack(WaveCtl& player, const PlayOptions& options) {
    TrackEntry track;
    track.p2 = options.echo ? 1 : 0;
    track.keyTempo = options.keyTempo;
    applyPreset(player, track);
}

void showProgress(const PlayProgress& progress, bool paused) {
    std::cout << "\r" << progress.line(paused) << std::flush;
}

// Runs until the file ends or an interrupt comes; Space pauses and resumes.
// The lyrics follow what the device has played, like the clock, so they keep
// time with what is heard through a start position and pauses.
int runPlayer(WaveCtl& player, PlayProgress& progress, std::optional<LyricPrompt>& lyrics,
              const InterruptFlag& interrupt) {
    TerminalKeys keys;
    const bool onTerminal = isatty(STDOUT_FILENO) == 1;
    if (onTerminal && lyrics) {
        std::cout << LyricPrompt::reserveRows();
    }
    for (int turn = 0;; ++turn) {
        const uint32_t played = player.wavGetSongPosition();
        // The state is read after the position: a player that stopped in
        // between has closed its device, whose position reads 0.
        if (player.wavIsStopped() == 1) {
            break;
        }
        progress.advance(played);
        if (interrupt.raised()) {
            player.wavStop();
            if (onTerminal) {
                std::cout << "\n";
            }
            return signalExitStatus(interrupt.signal());
        }
        if (onTerminal && lyrics) {
            std::cout << lyrics->follow(player, progress.start()) << std::flush;
        }
        if (onTerminal && turn % kTurnsPerClock == 0) {
            showProgress(progress, player.state() == kPlayerPaused);
        }
        if (keys.nextKey(kTurn) == ' ') {
            player.wavPause(player.state() == kPlayerPlaying ? 1 : 0);
        }
    }
    // The player's end is cut at buffer granularity, so the clock stops
    // short of the length; the file has been played through all the same.
    progress.finish();
    if (onTerminal) {
        if (lyrics) {
            std::cout << lyrics->update(double(progress.position()) / kNativeBytesPerSecond);
        }
        showProgress(progress, false);
        std::cout << "\n";
    }
    return 0;
}

int playFile(const PlayOptions& options) {
    // Caught from the start: a Ctrl-C while the file opens stops it too.
    const InterruptFlag interrupt;
    const auto files = songFiles(options.path, options.lyrics);
    if (!files) {
        return kExitBadInput;
    }
    const std::string& path = files->audio;
    uint32_t length = 0;
    if (const auto problem = accompanimentRefusal(path, length)) {
        return refuse(path, *problem, kExitBadInput);
    }
    const double startFrames = std::floor(options.startSeconds * kNativeFormat.samplesPerSec);
    if (!(startFrames * kNativeFrameBytes < length)) {
        std::cerr << "tunebox: --start " << options.startSeconds << " lies past the end of " << path
                  << " (" << formatSectorTime(length) << ")\n";
        return kExitBadInput;
    }
    std::optional<LyricPrompt> prompt;
    if (!openLyricPrompt(*files, prompt)) {
        return kExitBadInput;
    }
    const std::shared_ptr<AudioBackend> backend = makeAudioBackendFromEnvironment();
    WaveCtl player(*backend);
    if (player.wavHasOutputDevice() != 1) {
        std::cerr << "tunebox: no audio output device\n";
        return kExitBadInput;
    }
    initAsTrack(player, options);
    const auto start = static_cast<uint32_t>(startFrames) * kNativeFrameBytes;
    player.setSourceOptions(sourceOptionsFromSettings());
    if (player.wavOpenFile(path, start, length) != 1) {
        return refuse(path, openRefusal(path), kExitBadInput);
    }
    if (player.wavPlay() != 1) {
        std::cerr << "tunebox: no audio output device: " << player.lastDeviceError() << "\n";
        return kExitBadInput;
    }
    PlayProgress progress(adjustStartPosition(start), length);
    return runPlayer(player, progress, prompt, interrupt);
}

}  // namespace

void registerPlayCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand(
        "play",
        "Play an accompaniment (WAV, MP3, FLAC, Ogg, ... or an UltraStar song's audio) with its "
        "lyrics; Space pauses, Ctrl-C stops");
    auto options = std::make_shared<PlayOptions>();
    command
        ->add_option("FILE", options->path,
                     "The audio file (WAV, MP3, FLAC, Ogg, ...) or UltraStar .txt to play")
        ->required();
    addStartOption(*command, options->startSeconds, "Where to start, in seconds");
    command->add_flag("--echo", options->echo, "Play through the echo (reverb)");
    command->add_option("--lyrics", options->lyrics,
                        "The lyrics to show (.lrc or UltraStar .txt); by default the one "
                        "beside FILE under the same name");
    addKeyTempoOptions(*command, options->keyTempo);
    command->callback([&status, options] { status = playFile(*options); });
}

}  // namespace tunebox::cli
