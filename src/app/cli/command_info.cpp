#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>

#include "app/cli/commands.h"
#include "app/cli/input_checks.h"
#include "app/cli/source_settings.h"
#include "capture/accompaniment_note.h"
#include "playback/source_opener.h"
#include "playback/wav_length.h"
#include "playback/wav_repair.h"
#include "session/take_loudness.h"

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

void printTags(const Id3Tag& tag) {
    std::cout << "title: " << tag.title << "\nartist: " << tag.artist << "\nalbum: " << tag.album
              << "\ncomposer: " << tag.composer << "\ngenre: " << tag.genre
              << "\nyear: " << tag.year << "\ntrack: " << tag.track << "\n";
}

void printMp3(const SourceDescription& description, const Mp3StreamFacts& facts) {
    printMpegStream(facts);
    std::cout << "decoder: " << (description.builtinDecoder ? "built-in" : "system codec")
              << (description.resampled ? ", then resampled" : "") << "\n";
    if (description.tags) {
        printTags(*description.tags);
    }
}

// Texts as the file names them: Vorbis comments, AIFF names and the like.
void printCoded(const CodedFileFacts& coded) {
    std::cout << "container: " << coded.kind << "\ncodec: " << coded.codec << "\n";
    for (const SndfileTag& tag : coded.tags) {
        std::cout << tag.name << ": " << tag.value << "\n";
    }
}

void printSource(const std::string& path, const AudioSource& source) {
    const SourceDescription description = source.describe();
    const WaveFormat& format = description.format;
    const uint32_t length = source.length();
    std::cout << "file: " << path << "\n"
              << "format: tag " << format.formatTag << ", " << format.channels << " channels, "
              << format.samplesPerSec << " samples/s, " << format.avgBytesPerSec
              << " bytes/s, block align " << format.blockAlign << ", " << format.bitsPerSample
              << " bits, extra " << format.extraSize << "\n"
              << "reading: " << (description.converted ? "converted" : "direct") << "\n"
              << "length: " << length << " bytes, " << formatSectorTime(length) << "\n";
    if (description.mp3) {
        printMp3(description, *description.mp3);
    }
    if (description.coded) {
        printCoded(*description.coded);
    }
    if (const auto note = readAccompanimentNote(path)) {
        std::cout << "voice of a take over: " << note->path << ", from byte " << note->start
                  << " of " << note->length << "\n";
        if (!note->changes.empty()) {
            std::cout << "key and tempo moved during the take: " << note->changes.size()
                      << " times\n";
        }
    }
}

// Reads the whole file, so only for a WAV take, not every accompaniment.
void printLoudness(const std::string& path) {
    std::string problem;
    const auto loudness = measureTakeLoudness(path, sourceOptionsFromSettings(), problem);
    if (!loudness) {
        std::cout << "loudness: not measured: " << problem << "\n";
    } else if (!std::isfinite(loudness->integratedLufs)) {
        std::cout << "loudness: too quiet or too short to measure\n";
    } else {
        char text[96];
        std::snprintf(text, sizeof text, "loudness: %.1f LUFS integrated, true peak %.1f dBTP\n",
                      loudness->integratedLufs, loudness->truePeakDbtp);
        std::cout << text;
    }
}

int showInfo(const std::string& path) {
    if (const auto problem = inputRefusal(path)) {
        return refuse(path, *problem, kExitBadInput);
    }
    const SourceOpening opening = wavOpenSource(path, sourceOptionsFromSettings());
    if (opening.source) {
        printSource(path, *opening.source);
    }
    // Said even when the file cannot be read as it stands: a header whose
    // sizes were never written is refused, yet its take can be saved.
    const WavInspection inspection = inspectWav(path);
    if (opening.source && inspection.condition == WavCondition::kFinished) {
        printLoudness(path);
    }
    if (inspection.condition == WavCondition::kUnfinished) {
        std::cout << "unfinished: " << inspection.detail << "; run tunebox repair\n";
    }
    if (!opening.source) {
        return refuse(path, openRefusal(path), kExitBadInput);
    }
    return 0;
}

}  // namespace

void registerInfoCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand("info", "Show how an accompaniment file will be read");
    auto path = std::make_shared<std::string>();
    command
        ->add_option(
            "FILE", *path,
            "An accompaniment: WAV, MP3, MP2, FLAC, Ogg Vorbis, Opus, AIFF, CAF, W64 or RF64")
        ->required();
    command->callback([&status, path] { status = showInfo(*path); });
}

}  // namespace tunebox::cli
