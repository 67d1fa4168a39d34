#include "platform/audio_encoder.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>

#include "platform/mp3_encoder.h"
#include "platform/sndfile_writer.h"

namespace tunebox {

std::optional<ExportFormat> exportFormatForPath(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    constexpr std::array<std::pair<const char*, ExportFormat>, 4> kExtensions{{
        {".flac", ExportFormat::kFlac},
        {".mp3", ExportFormat::kMp3},
        {".ogg", ExportFormat::kOgg},
        {".opus", ExportFormat::kOpus},
    }};
    for (const auto& [name, format] : kExtensions) {
        if (extension == name) {
            return format;
        }
    }
    return std::nullopt;
}

QualityScale exportQualityScale(ExportFormat format) {
    switch (format) {
        case ExportFormat::kMp3:
            // VBR quality 2 averages about 190 kbit/s, transparent for most ears.
            return {0.0, 9.0, 2.0, "VBR quality, 0 best (about 245 kbit/s) to 9 smallest"};
        case ExportFormat::kOgg:
        case ExportFormat::kOpus:
            return {0.0, 1.0, 0.6, "VBR quality, 0 smallest to 1 best"};
        case ExportFormat::kFlac:
            break;
    }
    return {0.0, 1.0, 0.5, "compression effort, 0 fastest to 1 smallest (lossless either way)"};
}

std::unique_ptr<AudioEncoder> openAudioEncoder(const std::string& path,
                                               const EncoderSettings& settings,
                                               std::string& error) {
    if (settings.format == ExportFormat::kMp3) {
        return openMp3Encoder(path, settings, error);
    }
    return openSndfileWriter(path, settings, error);
}

}  // namespace tunebox
