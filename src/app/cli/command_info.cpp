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

const char* mpegVersionName(uint32_t versionId) {
    switch (versionId) {
        case 3:
            return "MPEG-1";
        case 2:
            return "MPEG-2";
        case 0:
            return "MPEG 2.5";
        default:
            return "reserved";
    }
}

void printMp3(const AudioSource& source) {
    const MpegHeader& header = source.mpegHeader;
    std::cout << "mpeg: " << mpegVersionName(header.versionId) << " Layer III, " << header.bitRate
              << " kbit/s, " << header.sampleRate << " Hz, " << (header.channelMode == 3 ? 1 : 2)
              << " channels\n";
    if (source.xingFrames != 0) {
        std::cout << "frames (Xing): " << source.xingFrames << "\n";
    }
    std::cout << "decoder: " << (source.ownDecoderFlag == 1 ? "built-in" : "system codec")
              << (source.conversionStages == 2 ? ", then resampled" : "") << "\n";
    if (source.id3v2Flag == 0 && source.id3v1Flag == 0) {
        return;
    }
    const Id3Tag& tag = source.id3Tag;
    std::cout << "title: " << tag.title << "\nartist: " << tag.artist << "\nalbum: " << tag.album
              << "\ncomposer: " << tag.composer << "\ngenre: " << tag.genre
              << "\nyear: " << tag.year << "\ntrack: " << tag.track << "\n";
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
    if (source.mpegHeader.sampleRate != 0) {
        printMp3(source);
    }
}

int showInfo(const std::string& path) {
    AudioSource source;
    uint32_t length = 0;
    if (wavGetLengthInto(path, source, length) != 1) {
        std::cerr << "tunebox: " << path << ": "
                  << refusalReasonOr(source, refusalText(explainRefusal(path))) << "\n";
        return kExitBadInput;
    }
    printSource(path, source, length);
    return 0;
}

}  // namespace

void registerInfoCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand("info", "Show how an accompaniment file will be read");
    auto path = std::make_shared<std::string>();
    command->add_option("FILE", *path, "A WAV or MP3 file")->required();
    command->callback([&status, path] { status = showInfo(*path); });
}

}  // namespace tunebox::cli
