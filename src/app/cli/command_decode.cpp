#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>

#include "app/cli/commands.h"
#include "app/cli/input_checks.h"
#include "app/cli/opened_source.h"
#include "app/cli/overwrite_option.h"
#include "app/cli/source_settings.h"
#include "app/cli/source_to_wav.h"
#include "playback/wav_length.h"

namespace tunebox::cli {
namespace {

struct DecodeOptions {
    std::string input;
    std::string output;   // "-": standard output
    std::string decoder;  // "", "system" or "builtin"
    bool raw = false;
    bool overwrite = false;
};

SourceOptions decoderChoice(const std::string& decoder) {
    if (decoder.empty()) {
        return sourceOptionsFromSettings();
    }
    return SourceOptions{decoder == "builtin"};
}

// With --raw the first stage's output is written as it comes: the stream's
// own rate and channels, before any resampling.
WaveFormat outputFormatOf(AudioSource& source, bool raw) {
    if (!raw) {
        return kNativeFormat;
    }
    return source.keepDecoderOutput().value_or(kNativeFormat);
}

// Progress and the closing line go to stderr: stdout may carry the WAV.
class DecodeProgress {
  public:
    DecodeProgress(uint32_t total, const WaveFormat& format)
        : shown_(isatty(STDERR_FILENO) == 1),
          total_(total),
          nativePerByte_(static_cast<double>(kNativeBytesPerSecond) / format.avgBytesPerSec) {}
    DecodeProgress(const DecodeProgress&) = delete;
    DecodeProgress& operator=(const DecodeProgress&) = delete;
    ~DecodeProgress() {
        if (shown_) {
            std::cerr << "\n";
        }
    }

    void add(uint32_t count) {
        done_ += count;
        if (!shown_) {
            return;
        }
        // Progress counts native-PCM bytes, the unit of the source's length.
        const auto native = static_cast<uint32_t>(std::min(done_ * nativePerByte_, 4294967295.0));
        const unsigned percent =
            total_ == 0 ? 100 : static_cast<unsigned>(std::min(100.0, 100.0 * native / total_));
        std::cerr << "\rdecode " << formatSectorTime(native) << " / " << formatSectorTime(total_)
                  << "  " << percent << "%" << std::flush;
    }

  private:
    bool shown_;
    uint32_t total_;
    double nativePerByte_;
    double done_ = 0;
};

int decode(const DecodeOptions& options) {
    if (const int refused = checkInputAndOutput(options.input, options.output, options.overwrite);
        refused != 0) {
        return refused;
    }
    OpenedSource opened;
    if (!opened.open(options.input, decoderChoice(options.decoder))) {
        return refuse(options.input, openRefusal(options.input), kExitBadInput);
    }
    AudioSource& source = opened.source();
    WavJob job{options.input, options.output, outputFormatOf(source, options.raw), {}, {}};
    uint64_t written = 0;
    int status = 0;
    {
        DecodeProgress progress(opened.length(), job.format);
        job.step = [&progress](uint8_t*, uint32_t count) { progress.add(count); };
        status = writeSourceAsWav(opened, job, written);
    }
    if (status == 0) {
        const SourceDescription description = source.describe();
        const bool builtin = description.builtinDecoder;
        std::cerr << (options.output == "-" ? "standard output" : options.output) << ": " << written
                  << " bytes, " << job.format.samplesPerSec << " Hz, " << job.format.channels
                  << " channels" << (builtin ? " (built-in decoder)" : "") << "\n";
        if (builtin && description.lostFrames > 0) {
            std::cerr << options.input << ": could not decode " << description.lostFrames
                      << " frames; silence stands in their place\n";
        }
    }
    return status;
}

}  // namespace

void registerDecodeCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand(
        "decode", "Decode an audio file (WAV, MP3, FLAC, Ogg, ...) to a native PCM WAV file");
    auto options = std::make_shared<DecodeOptions>();
    command->add_option("IN", options->input, "The audio file to decode")->required();
    command->add_option("OUT", options->output, "The WAV file to write; - for standard output")
        ->required();
    command->add_option("--decoder", options->decoder, "Which MP3 decoder to try first")
        ->check(CLI::IsMember({"system", "builtin"}));
    command->add_flag("--raw", options->raw,
                      "Write the decoder's own output: the stream's rate and channels");
    addOverwriteOption(*command, options->overwrite);
    command->callback([&status, options] { status = decode(*options); });
}

}  // namespace tunebox::cli
