#pragma once
// A take saved for sharing: FLAC, MP3, Ogg Vorbis or Opus, tagged with the
// song it was sung over, optionally brought to a target loudness. The file
// is written beside its target and renamed into place only when complete,
// so a failed export leaves nothing half written.

#include <optional>
#include <string>

#include "platform/audio_encoder.h"
#include "playback/source_options.h"
#include "session/take_loudness.h"

namespace tunebox {

struct ExportRequest {
    std::string take;
    std::string output;
    ExportFormat format = ExportFormat::kFlac;
    double quality = 0.0;  // within exportQualityScale(format)
    std::string artist;
    std::optional<double> normalizeLufs;  // none: the take's own level
    SourceOptions options;
};

struct ExportResult {
    std::string problem;                // empty when the output was written
    std::string title;                  // the title tag written
    std::optional<NormalizeGain> gain;  // when normalizing was asked for
};

ExportResult exportTake(const ExportRequest& request);

// "<accompaniment title> (take)": the accompaniment named in the take's
// voice file, by its title tag or else its file name; without a voice file,
// the take's own file name.
std::string takeTitle(const std::string& take, const SourceOptions& options);

// The local date the take was last written, "YYYY-MM-DD"; empty when the
// file cannot be asked.
std::string takeDate(const std::string& take);

}  // namespace tunebox
