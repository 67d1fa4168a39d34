#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>

#include "app/cli/commands.h"
#include "app/cli/input_checks.h"
#include "app/cli/overwrite_option.h"
#include "app/cli/source_settings.h"
#include "platform/settings.h"
#include "session/take_export.h"

namespace tunebox::cli {
namespace {

// Beyond these a target is a typing error: -70 LUFS is the meter's gate.
constexpr double kQuietestTarget = -70.0;
constexpr double kLoudestTarget = 0.0;

struct ExportArguments {
    std::string take;
    std::string output;
    std::optional<double> quality;
    std::optional<std::string> artist;
    std::optional<double> normalizeLufs;
    bool overwrite = false;
};

const char* formatName(ExportFormat format) {
    switch (format) {
        case ExportFormat::kMp3:
            return "MP3";
        case ExportFormat::kOgg:
            return "Ogg Vorbis";
        case ExportFormat::kOpus:
            return "Opus";
        case ExportFormat::kFlac:
            break;
    }
    return "FLAC";
}

std::string decibels(double value, const char* unit) {
    char text[32];
    std::snprintf(text, sizeof text, "%+.1f %s", value, unit);
    return text;
}

void reportGain(const NormalizeGain& gain, double target) {
    switch (gain.reason) {
        case GainReason::kReachesTarget:
            std::cout << "normalized: gain " << decibels(gain.decibels, "dB") << " to reach "
                      << decibels(target, "LUFS") << "\n";
            break;
        case GainReason::kPeakLimited:
            std::cout << "normalized: gain " << decibels(gain.decibels, "dB") << ", short of "
                      << decibels(target, "LUFS") << " so that the true peak stays at "
                      << decibels(kNormalizedPeakCeilingDbtp, "dBTP") << "\n";
            break;
        case GainReason::kUnmeasurable:
            std::cout << "not normalized: the take is too quiet or too short to measure\n";
            break;
    }
}

// Why the options cannot be used for `format`; nothing when they can.
std::optional<std::string> optionRefusal(const ExportArguments& arguments, ExportFormat format) {
    const QualityScale scale = exportQualityScale(format);
    if (arguments.quality &&
        !(*arguments.quality >= scale.lowest && *arguments.quality <= scale.highest)) {
        return "--quality: " + std::string(formatName(format)) + " takes " + scale.meaning;
    }
    if (arguments.normalizeLufs && !(*arguments.normalizeLufs >= kQuietestTarget &&
                                     *arguments.normalizeLufs <= kLoudestTarget)) {
        return "--normalize: a loudness from -70 to 0 LUFS, such as -14";
    }
    return std::nullopt;
}

int exportCommand(const ExportArguments& arguments) {
    const auto format = exportFormatForPath(arguments.output);
    if (!format) {
        return refuse(arguments.output,
                      "cannot export to this kind of file; name it .flac, .mp3, "
                      ".ogg or .opus",
                      kExitBadInput);
    }
    if (const auto problem = optionRefusal(arguments, *format)) {
        std::cerr << "tunebox: " << *problem << "\n";
        return kExitBadInput;
    }
    if (const int status =
            checkInputAndOutput(arguments.take, arguments.output, arguments.overwrite)) {
        return status;
    }
    uint32_t length = 0;
    if (const auto problem = accompanimentRefusal(arguments.take, length)) {
        return refuse(arguments.take, *problem, kExitBadInput);
    }
    const ExportResult result = exportTake({
        .take = arguments.take,
        .output = arguments.output,
        .format = *format,
        .quality = arguments.quality.value_or(exportQualityScale(*format).standard),
        .artist = arguments.artist.value_or(readExportArtist()),
        .normalizeLufs = arguments.normalizeLufs,
        .options = sourceOptionsFromSettings(),
    });
    if (result.gain) {
        reportGain(*result.gain, *arguments.normalizeLufs);
    }
    if (!result.problem.empty()) {
        return refuse(arguments.output, result.problem, kExitBadInput);
    }
    std::cout << arguments.output << ": " << formatName(*format) << ", \"" << result.title
              << "\"\n";
    return 0;
}

std::string qualityHelp() {
    std::string help = "Per format: ";
    for (const ExportFormat format :
         {ExportFormat::kFlac, ExportFormat::kMp3, ExportFormat::kOgg, ExportFormat::kOpus}) {
        const QualityScale scale = exportQualityScale(format);
        char standard[16];
        std::snprintf(standard, sizeof standard, "%g", scale.standard);
        help += std::string(formatName(format)) + ": " + scale.meaning + " (default " + standard +
                "); ";
    }
    help.resize(help.size() - 2);
    return help;
}

}  // namespace

void registerExportCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand(
        "export", "Save a take as FLAC, MP3, Ogg Vorbis or Opus, tagged with its song");
    auto arguments = std::make_shared<ExportArguments>();
    command->add_option("TAKE", arguments->take, "A recorded take (WAV)")->required();
    command
        ->add_option("OUTPUT", arguments->output,
                     "The file to write; its extension (.flac, .mp3, .ogg, .opus) "
                     "chooses the format")
        ->required();
    command->add_option("--quality", arguments->quality, qualityHelp());
    command->add_option("--artist", arguments->artist,
                        "The artist tag (default: ARTIST in section EXPORT of the settings file)");
    command->add_option("--normalize", arguments->normalizeLufs,
                        "Bring the take to this integrated loudness in LUFS (-14 suits most "
                        "players), by gain only: the true peak stays at or below -1 dBTP");
    addOverwriteOption(*command, arguments->overwrite);
    command->callback([&status, arguments] { status = exportCommand(*arguments); });
}

}  // namespace tunebox::cli
