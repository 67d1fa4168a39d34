#include <iostream>
#include <memory>
#include <string>

#include "app/cli/commands.h"
#include "app/cli/input_checks.h"
#include "mp3/id3_v1_fields.h"
#include "playback/wav_length.h"

namespace tunebox::cli {
namespace {

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

void printMpegStream(const Mp3StreamFacts& facts) {
    const MpegHeader& header = facts.firstHeader;
    const bool variable = facts.averageBitRate != header.bitRate;
    std::cout << "mpeg: " << mpegVersionName(header.versionId) << " Layer "
              << std::string(mpegLayerNumber(header), 'I') << ", " << facts.averageBitRate
              << (variable ? " kbit/s average, " : " kbit/s, ") << header.sampleRate << " Hz, "
              << (header.channelMode == 3 ? 1 : 2) << " channels\n";
    if (facts.xing.frames != 0) {
        std::cout << "frames (Xing): " << facts.xing.frames << "\n";
    }
    if (facts.xing.gapless) {
        std::cout << "gapless: " << facts.xing.encoderDelay << " samples of encoder delay, "
                  << facts.xing.encoderPadding << " of padding left out\n";
    }
}

// ID3v2 texts first; an ID3v1 tag fills what they leave out.
void printTags(const AudioSource& source) {
    if (source.id3v2Flag == 0 && source.id3v1Flag == 0) {
        return;
    }
    Id3Tag tag = source.id3v2Flag == 1 ? source.id3Tag : Id3Tag{};
    if (source.id3v1Flag == 1) {
        id3FillFromV1(tag, source.id3v1);
    }
    std::cout << "title: " << tag.title << "\nartist: " << tag.artist << "\nalbum: " << tag.album
              << "\ncomposer: " << tag.composer << "\ngenre: " << tag.genre
              << "\nyear: " << tag.year << "\ntrack: " << tag.track << "\n";
}

void printMp3(const AudioSource& source) {
    printMpegStream(source.mp3Facts);
    std::cout << "decoder: " << (source.ownDecoderFlag == 1 ? "built-in" : "system codec")
              << (source.conversionStages == 2 ? ", then resampled" : "") << "\n";
    printTags(source);
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
    if (source.mp3Facts.firstHeader.sampleRate != 0) {
        printMp3(source);
    }
}

int showInfo(const std::string& path) {
    if (const auto problem = inputRefusal(path)) {
        return refuse(path, *problem, kExitBadInput);
    }
    AudioSource source;
    uint32_t length = 0;
    if (wavGetLengthInto(path, source, length) != 1) {
        return refuse(path, openRefusal(path), kExitBadInput);
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
