#include <iostream>
#include <memory>
#include <string>

#include "app/cli/commands.h"
#include "app/cli/path_kind.h"
#include "playback/wav_length.h"
#include "playback/wav_reader.h"
#include "playback/wav_refusal.h"

namespace tunebox::cli {
namespace {

// Runs the WAVE reader once more, on its own, to learn where it stopped.
WavRefusal explainRefusal(const std::string& path) {
    RiffHandle file;
    uint32_t length = 0;
    AudioSource source;
    const WavOpenStatus status = wavExamineWaveFile(path, file, length, source);
    return classifyRefusal(pathKindOf(path), status);
}

void printSource(const std::string& path, const AudioSource& source, uint32_t length) {
    const WaveFormat& format = source.outputFormat;
    std::cout << "file: " << path << "\n"
              << "format: tag " << format.formatTag << ", " << format.channels << " channels, "
              << format.samplesPerSec << " samples/s, " << format.avgBytesPerSec
              << " bytes/s, block align " << format.blockAlign << ", " << format.bitsPerSample
              << " bits, extra " << format.extraSize << "\n"
              << "reading: " << (source.conversionFlag == 1 ? "converted" : "direct") << "\n"
              << "length: " << length << " bytes, " << formatSectorTime(length) << "\n";
}

int showInfo(const std::string& path) {
    AudioSource source;
    uint32_t length = 0;
    if (wavGetLengthInto(path, source, length) != 1) {
        std::cerr << "tunebox: " << path << ": " << refusalText(explainRefusal(path)) << "\n";
        return kExitBadInput;
    }
    printSource(path, source, length);
    return 0;
}

}  // namespace

void registerInfoCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand("info", "Show how an accompaniment file will be read");
    auto path = std::make_shared<std::string>();
    command->add_option("FILE", *path, "A WAV file")->required();
    command->callback([&status, path] { status = showInfo(*path); });
}

}  // namespace tunebox::cli
