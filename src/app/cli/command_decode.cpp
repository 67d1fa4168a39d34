#include <unistd.h>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "app/cli/commands.h"
#include "mp3/mp3_open.h"
#include "playback/source_reader.h"
#include "playback/wav_length.h"
#include "playback/wav_reader.h"
#include "playback/wav_refusal.h"
#include "playback/wav_writer.h"

namespace tunebox::cli {
namespace {

struct DecodeOptions {
    std::string input;
    std::string output;
    std::string decoder;  // "", "system" or "builtin"
    bool raw = false;
};

int fail(const std::string& path, const std::string& reason, int status = kExitBadInput) {
    std::cerr << "tunebox: " << path << ": " << reason << "\n";
    return status;
}

bool openInput(const DecodeOptions& options, RiffHandle& file, uint32_t& length,
               AudioSource& source) {
    mp3ResetSource(source);
    if (!options.decoder.empty()) {
        source.ownDecoderFlag = options.decoder == "builtin" ? 1 : 0;
    }
    return wavOpenResetSource(options.input, file, length, source) == 1;
}

// With --raw the first stage's output is written as it comes: the stream's
// own rate and channels, before any resampling.
WaveFormat outputFormatOf(AudioSource& source, bool raw) {
    if (!raw || source.conversionFlag != 1) {
        return kNativeFormat;
    }
    source.conversionStages = 1;
    return acmDestinationFormat(source.acm);
}

void showProgress(uint32_t done, uint32_t total) {
    const unsigned percent = total == 0 ? 100 : static_cast<unsigned>(100.0 * done / total);
    std::cout << "\rdecode " << formatSectorTime(done) << " / " << formatSectorTime(total) << "  "
              << std::min(percent, 100u) << "%" << std::flush;
}

int decode(const DecodeOptions& options) {
    AudioSource source;
    RiffHandle file;
    uint32_t length = 0;
    if (!openInput(options, file, length, source)) {
        return fail(options.input, refusalReasonOr(source,
                                                   "cannot be decoded (not a readable "
                                                   "WAVE or MP3 file)"));
    }
    WaveWriter writer;
    wavResetWriter(writer);
    writer.format = outputFormatOf(source, options.raw);
    if (wavCreateFile(options.output, writer) != 1) {
        wavCloseSource(file, source);
        return fail(options.output, "cannot be created");
    }
    // Progress counts native-PCM bytes, the unit of the source's length.
    const double nativePerByte =
        static_cast<double>(kNativeBytesPerSecond) / writer.format.avgBytesPerSec;
    const bool terminal = isatty(STDOUT_FILENO) == 1;
    std::vector<uint8_t> block(kEngineBlockBytes);
    uint64_t written = 0;
    int status = 0;
    for (uint32_t end = 0; end == 0;) {
        uint32_t count = 0;
        const int read = sourceRead(*file, block.data(), kEngineBlockBytes, count, end, source);
        if (count > 0 && wavWrite(writer, block.data(), count) != 1) {
            status = fail(options.output, "could not be written (disk full?)", 1);
            break;
        }
        written += count;
        if (terminal) {
            showProgress(static_cast<uint32_t>(written * nativePerByte), length);
        }
        if (read != 1) {
            status =
                count == 0 && end == 1 ? 0 : fail(options.input, "a frame could not be decoded", 1);
            break;
        }
    }
    if (terminal) {
        std::cout << "\n";
    }
    const bool builtin = source.conversionFlag == 1 && source.ownDecoderFlag == 1;
    wavCloseSource(file, source);
    if (wavCloseFile(writer) != 1 && status == 0) {
        status = fail(options.output, "could not be finished", 1);
    }
    if (status == 0) {
        std::cout << options.output << ": " << written << " bytes, " << writer.format.samplesPerSec
                  << " Hz, " << writer.format.channels << " channels"
                  << (builtin ? " (built-in decoder)" : "") << "\n";
    }
    return status;
}

}  // namespace

void registerDecodeCommand(CLI::App& app, int& status) {
    auto* command =
        app.add_subcommand("decode", "Decode a WAV or MP3 file to a native PCM WAV file");
    auto options = std::make_shared<DecodeOptions>();
    command->add_option("IN", options->input, "The WAV or MP3 file to decode")->required();
    command->add_option("OUT", options->output, "The WAV file to write")->required();
    command->add_option("--decoder", options->decoder, "Which MP3 decoder to try first")
        ->check(CLI::IsMember({"system", "builtin"}));
    command->add_flag("--raw", options->raw,
                      "Write the decoder's own output: the stream's rate and channels");
    command->callback([&status, options] { status = decode(*options); });
}

}  // namespace tunebox::cli
