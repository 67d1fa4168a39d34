#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

#include "app/cli/commands.h"
#include "app/cli/interrupt_flag.h"
#include "app/cli/terminal_keys.h"
#include "playback/playback_clock.h"
#include "playback/wav_length.h"
#include "playback/wav_refusal.h"
#include "playback/wave_ctl.h"

namespace tunebox::cli {
namespace {

struct PlayOptions {
    std::string path;
    double startSeconds = 0;
    bool echo = false;
};

constexpr int kBarWidth = 30;
constexpr auto kPollInterval = std::chrono::milliseconds(100);

std::string whyNotPlayable(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status)) {
        return "no such file";
    }
    if (std::filesystem::is_directory(status)) {
        return "is a directory";
    }
    if (!std::ifstream(path, std::ios::binary)) {
        return "cannot be read";
    }
    return "not a WAV or MP3 file that can be played";
}

// The track's defaults as the dialog plays them: level 100, every band at
// 24, every stage off but the echo when asked for, room size 0.9.
void initAsTrack(WaveCtl& player, bool echo) {
    BandValues bands;
    bands.fill(24);
    player.wavInit(nullptr, 100, bands, 0, 0, echo ? 1 : 0, 0, PlayRange{}, 1);
    player.wavSetRoomSize(9);
}

void showProgress(WaveCtl& player) {
    uint32_t minutes = 0;
    uint32_t seconds = 0;
    uint32_t frames = 0;
    if (player.wavGetTime(minutes, seconds, frames) != 1) {
        return;
    }
    const uint32_t slider = player.wavGetSliderPos();
    const int filled = static_cast<int>(std::min(slider, kSliderRange) * kBarWidth / kSliderRange);
    char clock[32];
    std::snprintf(clock, sizeof clock, "%02u:%02u:%02u", minutes, seconds, frames);
    std::cout << "\r" << clock << " [" << std::string(filled, '#')
              << std::string(kBarWidth - filled, '-') << "] "
              << (player.state() == kPlayerPaused ? "paused " : "       ") << std::flush;
}

// Runs until the file ends or an interrupt comes; Space pauses and resumes.
int runPlayer(WaveCtl& player) {
    const InterruptFlag interrupt;
    TerminalKeys keys;
    const bool onTerminal = isatty(STDOUT_FILENO) == 1;
    int status = 0;
    while (player.wavIsStopped() == 0) {
        if (interrupt.raised()) {
            player.wavStop();
            status = kExitInterrupted;
            break;
        }
        if (keys.nextKey(kPollInterval) == ' ') {
            player.wavPause(player.state() == kPlayerPlaying ? 1 : 0);
        }
        if (onTerminal) {
            showProgress(player);
        }
    }
    if (onTerminal) {
        std::cout << "\n";
    }
    return status;
}

int playFile(const PlayOptions& options) {
    const std::string& path = options.path;
    AudioSource probe;
    uint32_t length = 0;
    if (wavGetLengthInto(path, probe, length) != 1) {
        std::cerr << "tunebox: " << path << ": " << refusalReasonOr(probe, whyNotPlayable(path))
                  << "\n";
        return kExitBadInput;
    }
    const double startFrames = std::floor(options.startSeconds * kNativeFormat.samplesPerSec);
    if (!(startFrames * kNativeFrameBytes < length)) {
        std::cerr << "tunebox: --start " << options.startSeconds << " lies past the end of " << path
                  << " (" << formatSectorTime(length) << ")\n";
        return kExitBadInput;
    }
    if (WaveCtl::wavHasOutputDevice() != 1) {
        std::cerr << "tunebox: no audio output device\n";
        return kExitBadInput;
    }
    WaveCtl player;
    initAsTrack(player, options.echo);
    const auto start = static_cast<uint32_t>(startFrames) * kNativeFrameBytes;
    if (player.wavOpenFile(path, start, length) != 1) {
        std::cerr << "tunebox: " << path << ": " << whyNotPlayable(path) << "\n";
        return kExitBadInput;
    }
    if (player.wavPlay() != 1) {
        std::cerr << "tunebox: no audio output device: " << player.lastDeviceError() << "\n";
        return kExitBadInput;
    }
    return runPlayer(player);
}

}  // namespace

void registerPlayCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand(
        "play", "Play an accompaniment (WAV or MP3); Space pauses, Ctrl-C stops");
    auto options = std::make_shared<PlayOptions>();
    command->add_option("FILE", options->path, "The WAV or MP3 file to play")->required();
    command->add_option("--start", options->startSeconds, "Where to start, in seconds")
        ->check(CLI::NonNegativeNumber);
    command->add_flag("--echo", options->echo, "Play through the echo (reverb)");
    command->callback([&status, options] { status = playFile(*options); });
}

}  // namespace tunebox::cli
