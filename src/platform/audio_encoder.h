#pragma once
// Writing a take in a format made for sharing: FLAC, MP3, Ogg Vorbis or
// Opus, from native PCM, with the tags a player shows. Each format has its
// own scale for --quality; exportQualityScale says what it means.

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace tunebox {

enum class ExportFormat { kFlac, kMp3, kOgg, kOpus };

// The format a file name's extension asks for (".flac", ".mp3", ".ogg",
// ".opus", in any case); none for any other name.
std::optional<ExportFormat> exportFormatForPath(const std::string& path);

// What --quality means for one format: the range, the value used when none
// is given, and a phrase for help texts.
struct QualityScale {
    double lowest = 0.0;
    double highest = 0.0;
    double standard = 0.0;
    const char* meaning = "";
};

QualityScale exportQualityScale(ExportFormat format);

struct ExportTags {
    std::string title;   // UTF-8
    std::string artist;  // UTF-8; left out when empty
    std::string date;    // "YYYY-MM-DD"
};

struct EncoderSettings {
    ExportFormat format = ExportFormat::kFlac;
    double quality = 0.0;  // within exportQualityScale(format)
    ExportTags tags;
};

class AudioEncoder {
  public:
    AudioEncoder() = default;
    virtual ~AudioEncoder() = default;
    AudioEncoder(const AudioEncoder&) = delete;
    AudioEncoder& operator=(const AudioEncoder&) = delete;

    // Encodes interleaved native-PCM samples (left, right, ...). Empty, or
    // one phrase saying why the file cannot be written.
    [[nodiscard]] virtual std::string write(std::span<const int16_t> samples) = 0;

    // Encodes what the encoder still holds, completes the file's headers and
    // closes it. Empty, or why the file is not complete.
    [[nodiscard]] virtual std::string finish() = 0;
};

// Creates `path` (replacing it) for `settings.format`; null with `error`
// saying why when it cannot be.
std::unique_ptr<AudioEncoder> openAudioEncoder(const std::string& path,
                                               const EncoderSettings& settings, std::string& error);

}  // namespace tunebox
