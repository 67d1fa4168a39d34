#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/cli/commands.h"
#include "app/cli/input_checks.h"
#include "app/cli/key_tempo_options.h"
#include "app/cli/opened_source.h"
#include "app/cli/overwrite_option.h"
#include "app/cli/source_settings.h"
#include "app/cli/source_to_wav.h"
#include "core/wave_format.h"
#include "effects/effect_chain.h"
#include "effects/key_tempo_stage.h"
#include "playback/wav_length.h"

namespace tunebox::cli {
namespace {

constexpr int kExitFailure = 1;
// Shorter files are done before a progress line would be worth reading.
constexpr uint32_t kProgressFromBytes = 30 * kNativeBytesPerSecond;
constexpr auto kProgressInterval = std::chrono::milliseconds(200);

struct FxOptions {
    std::string input;
    std::string output;  // "-": standard output
    bool echo = false;
    std::vector<int> bands;  // empty: equaliser off
    std::optional<int> level;
    bool centreCut = false;
    bool overwrite = false;
    KeyTempo keyTempo;
};

// The opened file as the key and tempo stage's input.
class FileInput final : public StageInput {
  public:
    explicit FileInput(OpenedSource& source) : source_(source) {}

    uint32_t readFrames(int16_t* into, uint32_t frames, bool& ended) override {
        const BlockRead read =
            source_.read(reinterpret_cast<uint8_t*>(into), frames * kNativeFrameBytes);
        failed_ = failed_ || read.failed;
        ended = read.ended || read.failed;
        return read.count / kNativeFrameBytes;
    }

    bool failed() const { return failed_; }

  private:
    OpenedSource& source_;
    bool failed_ = false;
};

// The file moved in key and tempo, a block at a time; the stage's tail is
// played out after the file's end.
BlockMaker keyTempoBlocks(KeyTempoStage& stage, FileInput& input) {
    return [&stage, &input](uint8_t* block, uint32_t capacity) {
        const StageOutput output =
            stage.render(input, reinterpret_cast<int16_t*>(block), capacity / kNativeFrameBytes);
        return BlockRead{output.frames * kNativeFrameBytes, output.ended, input.failed()};
    };
}

bool setUpChain(EffectControl& ctl, const FxOptions& options) {
    BandValues values;
    values.fill(kFlatBandValue);
    std::copy(options.bands.begin(), options.bands.end(), values.begin());
    ctl.blockSize = kEngineBlockBytes;
    if (fltEqualizerInit(ctl, values, kNativeSampleRate) != 1) {
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
        : shown_(isatty(STDERR_FILENO) == 1 && total >= kProgressFromBytes), total_(total) {}

    void update(uint32_t count, float blockPeak) {
        done_ = std::min<uint64_t>(done_ + count, total_);
        peak_ = std::max(peak_, blockPeak);
        const auto now = std::chrono::steady_clock::now();
        if (shown_ && now - lastShown_ >= kProgressInterval) {
            lastShown_ = now;
            show(static_cast<uint32_t>(done_));
        }
    }

    void finish() {
        if (shown_) {
            show(total_);
            std::fputs("\n", stderr);
        }
    }

  private:
    void show(uint32_t done) {
        const double peakDb = 20.0 * std::log10(std::max(peak_, 1.0f) / 32768.0);
        std::fprintf(stderr, "\rfx %s / %s  %3u%%  peak %6.1f dBFS", formatSectorTime(done).c_str(),
                     formatSectorTime(total_).c_str(), static_cast<unsigned>(100.0 * done / total_),
                     peakDb);
        std::fflush(stderr);
        peak_ = 0.0f;
    }

    bool shown_;
    uint32_t total_;
    uint64_t done_ = 0;
    float peak_ = 0.0f;
    std::chrono::steady_clock::time_point lastShown_{};
};

// Runs the chain over the input block by block, as the engines would.
int runFx(const FxOptions& options) {
    if (const int refused = checkInputAndOutput(options.input, options.output, options.overwrite);
        refused != 0) {
        return refused;
    }
    OpenedSource opened;
    if (!opened.open(options.input, sourceOptionsFromSettings())) {
        return refuse(options.input, openRefusal(options.input), kExitBadInput);
    }
    EffectControl ctl;
    if (!setUpChain(ctl, options)) {
        return refuse(options.input, "not enough memory for the effects", kExitFailure);
    }
    Progress progress(opened.length());
    const BlockStep effects = [&ctl, &progress](uint8_t* bytes, uint32_t count) {
        progress.update(count, fltEffectChain(ctl, reinterpret_cast<int16_t*>(bytes), count));
    };
    std::optional<KeyTempoStage> stage;
    FileInput input(opened);
    BlockMaker blocks;
    if (!options.keyTempo.neutral()) {
        stage.emplace(options.keyTempo, kNativeSampleRate);
        blocks = keyTempoBlocks(*stage, input);
    }
    uint64_t written = 0;
    const int status = writeSourceAsWav(
        opened, {options.input, options.output, kNativeFormat, effects, blocks}, written);
    if (status == 0) {
        progress.finish();
    }
    return status;
}

}  // namespace

void registerFxCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand(
        "fx", "Run an accompaniment through the effect chain into a new WAV file");
    auto options = std::make_shared<FxOptions>();
    command->add_option("IN", options->input, "An audio file (WAV, MP3, FLAC, Ogg, ...)")
        ->required();
    command->add_option("OUT", options->output, "WAV file to write; - for standard output")
        ->required();
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
    addKeyTempoOptions(*command, options->keyTempo);
    addOverwriteOption(*command, options->overwrite);
    command->callback([&status, options] { status = runFx(*options); });
}

}  // namespace tunebox::cli
