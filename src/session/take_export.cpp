#include "session/take_export.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>
#include <filesystem>
#include <limits>
#include <vector>

#include "capture/accompaniment_note.h"
#include "platform/staged_output.h"
#include "playback/source_opener.h"
#include "session/source_samples.h"
#include "session/voice_file.h"

namespace tunebox {
namespace {

std::string accompanimentTitle(const std::string& path, const SourceOptions& options) {
    const SourceOpening opening = wavOpenSource(path, options);
    if (opening.source) {
        const SourceDescription description = opening.source->describe();
        if (description.tags && !description.tags->title.empty()) {
            return description.tags->title;
        }
    }
    return std::filesystem::path(path).stem().string();
}

int16_t scaledSample(int16_t sample, double factor) {
    const double scaled = std::round(sample * factor);
    return static_cast<int16_t>(std::clamp(scaled, double{std::numeric_limits<int16_t>::min()},
                                           double{std::numeric_limits<int16_t>::max()}));
}

// Encodes the take into `path`, scaled by `factor` unless it is 1.
std::string encodeTake(const ExportRequest& request, const EncoderSettings& settings,
                       const std::string& path, double factor) {
    std::string problem;
    const std::unique_ptr<AudioEncoder> encoder = openAudioEncoder(path, settings, problem);
    if (!encoder) {
        return problem;
    }
    std::vector<int16_t> scaled;
    problem =
        forEachSourceBlock(request.take, request.options, [&](std::span<const int16_t> samples) {
            if (factor == 1.0) {
                return encoder->write(samples);
            }
            scaled.resize(samples.size());
            std::transform(samples.begin(), samples.end(), scaled.begin(),
                           [factor](int16_t sample) { return scaledSample(sample, factor); });
            return encoder->write(scaled);
        });
    return problem.empty() ? encoder->finish() : problem;
}

}  // namespace

std::string takeTitle(const std::string& take, const SourceOptions& options) {
    const auto note = readAccompanimentNote(voiceFilePath(take));
    const std::string song = note ? accompanimentTitle(note->path, options)
                                  : std::filesystem::path(take).stem().string();
    return song + " (take)";
}

std::string takeDate(const std::string& take) {
    std::error_code error;
    const auto written = std::filesystem::last_write_time(take, error);
    if (error) {
        return {};
    }
    const std::time_t seconds =
        std::chrono::system_clock::to_time_t(std::chrono::file_clock::to_sys(written));
    std::tm local{};
    if (const std::tm* converted = std::localtime(&seconds)) {
        local = *converted;
    }
    char text[16] = {};
    std::strftime(text, sizeof text, "%Y-%m-%d", &local);
    return text;
}

ExportResult exportTake(const ExportRequest& request) {
    ExportResult result;
    double factor = 1.0;
    if (request.normalizeLufs) {
        const auto loudness = measureTakeLoudness(request.take, request.options, result.problem);
        if (!loudness) {
            return result;
        }
        result.gain = normalizeGain(*loudness, *request.normalizeLufs);
        factor = std::pow(10.0, result.gain->decibels / 20.0);
    }
    const std::unique_ptr<StagedOutput> staged =
        StagedOutput::create(request.output, result.problem);
    if (!staged) {
        return result;
    }
    const EncoderSettings settings{
        .format = request.format,
        .quality = request.quality,
        .tags = {.title = takeTitle(request.take, request.options),
                 .artist = request.artist,
                 .date = takeDate(request.take)},
    };
    result.title = settings.tags.title;
    result.problem = encodeTake(request, settings, staged->stagingPath(), factor);
    if (result.problem.empty()) {
        staged->commit(result.problem);
    }
    return result;
}

}  // namespace tunebox
