#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/cli/commands.h"
#include "app/cli/path_kind.h"
#include "effects/effect_chain.h"
#include "playback/direct_source.h"
#include "playback/wav_length.h"
#include "playback/wav_reader.h"
#include "playback/wav_refusal.h"
#include "playback/wav_writer.h"

namespace tunebox::cli {
namespace {

constexpr int kExitFailure = 1;
constexpr int kSampleRate = 44100;
// Shorter files are done before a progress line would be worth reading.
constexpr uint32_t kProgressFromBytes = 30 * kNativeBytesPerSecond;
constexpr auto kProgressInterval = std::chrono::milliseconds(200);
constexpr const char* kNotNative = "not native PCM (fx reads only 44100 Hz 16-bit stereo PCM)";

struct FxOptions {
    std::string input;
    std::string output;
    bool echo = false;
    std::vector<int> bands;  // empty: equaliser off
    std::optional<int> level;
    bool centreCut = false;
};

int fail(const std::string& path, const std::string& reason, int status) {
    std::cerr << "tunebox: " << path << ": " << reason << "\n";
    return status;
}

// Opens a WAVE file whose samples are native PCM as they stand; the effects
// are meant to be heard on the samples themselves, not on a conversion.
bool openNativeInput(const std::string& path, RiffHandle& file, uint32_t& length) {
    AudioSource source;
    const WavOpenStatus status = wavExamineWaveFile(path, file, length, source);
    if (status != WavOpenStatus::opened) {
        fail(path, refusalReasonOr(source, refusalText(classifyRefusal(pathKindOf(path), status))),
             kExitBadInput);
        return false;
    }
    if (source.conversionFlag != 0) {
        wavCloseSource(file, source);
        fail(path, kNotNative, kExitBadInput);
        return false;
    }
    return true;
}

bool setUpChain(EffectControl& ctl, const FxOptions& options) {
    BandValues values;
    values.fill(kFlatBandValue);
    std::copy(options.bands.begin(), options.bands.end(), values.begin());
    ctl.blockSize = kEngineBlockBytes;
    if (fltEqualizerInit(ctl, values, kSampleRate) != 1) {
        return false;
    }
    ctl.level = options.level.value_or(100);
    ctl.levelFlag = options.level ? 1 : 0;
    ctl.equaliserFlag = options.bands.empty() ? 0 : 1;
    ctl.centreRemovalFlag = options.centreCut ? 1 : 0;
    ctl.reverbFlag = options.echo ? 1 : 0;
    return true;
}

// One line on a terminal, rewritten in place while a long file is processed.
class Progress {
  public:
    explicit Progress(uint32_t total)
        : shown_(isatty(STDOUT_FILENO) == 1 && total >= kProgressFromBytes), total_(total) {}

    void update(uint32_t done, float blockPeak) {
        peak_ = std::max(peak_, blockPeak);
        const auto now = std::chrono::steady_clock::now();
        if (shown_ && now - lastShown_ >= kProgressInterval) {
            lastShown_ = now;
            show(done);
        }
    }

    void finish() {
        if (shown_) {
            show(total_);
            std::printf("\n");
        }
    }

  private:
    void show(uint32_t done) {
        const double peakDb = 20.0 * std::log10(std::max(peak_, 1.0f) / 32768.0);
        std::printf("\rfx %s / %s  %3u%%  peak %6.1f dBFS", formatSectorTime(done).c_str(),
                    formatSectorTime(total_).c_str(), static_cast<unsigned>(100.0 * done / total_),
                    peakDb);
        std::fflush(stdout);
        peak_ = 0.0f;
    }

    bool shown_;
    uint32_t total_;
    float peak_ = 0.0f;
    std::chrono::steady_clock::time_point lastShown_{};
};

// Runs the chain over the input block by block, as the engines would.
int processFile(RiffFile& file, uint32_t length, EffectControl& ctl, WaveWriter& writer,
                const FxOptions& options) {
    std::vector<int16_t> block(kEngineBlockBytes / sizeof(int16_t));
    auto* bytes = reinterpret_cast<uint8_t*>(block.data());
    Progress progress(length);
    for (uint32_t done = 0; done < length;) {
        const uint32_t wanted = std::min(kEngineBlockBytes, length - done);
        uint32_t count = 0;
        uint32_t endOfSource = 0;
        wavReadDirect(file, bytes, wanted, count, endOfSource);
        if (count < wanted) {
            return fail(options.input, refusalText(WavRefusal::damaged), kExitBadInput);
        }
        const float peak = fltEffectChain(ctl, block.data(), count);
        if (wavWrite(writer, bytes, count) != 1) {
            return fail(options.output, "cannot be written", kExitFailure);
        }
        done += count;
        progress.update(done, peak);
    }
    progress.finish();
    return 0;
}

bool sameFile(const std::string& a, const std::string& b) {
    std::error_code error;
    return std::filesystem::equivalent(a, b, error);
}

int runFx(const FxOptions& options) {
    if (sameFile(options.input, options.output)) {
        return fail(options.output, "is the input file", kExitBadInput);
    }
    RiffHandle file;
    uint32_t length = 0;
    if (!openNativeInput(options.input, file, length)) {
        return kExitBadInput;
    }
    EffectControl ctl;
    if (!setUpChain(ctl, options)) {
        return fail(options.input, "not enough memory for the effects", kExitFailure);
    }
    WaveWriter writer;
    wavResetWriter(writer);
    if (wavCreateFile(options.output, writer) != 1) {
        return fail(options.output, "cannot be created", kExitFailure);
    }
    int status = processFile(*file, length, ctl, writer, options);
    if (wavCloseFile(writer) != 1 && status == 0) {
        status = fail(options.output, "cannot be finished", kExitFailure);
    }
    if (status != 0) {
        std::error_code ignored;
        std::filesystem::remove(options.output, ignored);
    }
    return status;
}

}  // namespace

void registerFxCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand(
        "fx", "Run a native WAV file through the effect chain into a new WAV file");
    auto options = std::make_shared<FxOptions>();
    command->add_option("IN", options->input, "Native PCM WAV file (44100 Hz, 16-bit stereo)")
        ->required();
    command->add_option("OUT", options->output, "WAV file to write")->required();
    command->add_flag("--echo", options->echo, "Reverb");
    command
        ->add_option("--eq", options->bands,
                     "Ten band values V0,...,V9: 24 is flat, each step lower boosts by 0.625 dB")
        ->delimiter(',')
        ->expected(kBandCount)
        ->check(CLI::Range(0, 48));
    command->add_option("--level", options->level, "Level in percent")->check(CLI::Range(0, 1000));
    command->add_flag("--centre-cut", options->centreCut,
                      "Remove what both channels share (a centred voice)");
    command->callback([&status, options] { status = runFx(*options); });
}

}  // namespace tunebox::cli
