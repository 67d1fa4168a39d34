#include "session/voice_file.h"

#include <filesystem>

namespace tunebox {

std::string voiceFilePath(const std::string& take) {
    std::filesystem::path path(take);
    const std::string extension = path.has_extension() ? path.extension().string() : ".wav";
    path.replace_extension(".voice" + extension);
    return path.string();
}

std::optional<RepairResult> repairVoiceFile(const std::string& take) {
    const std::string voice = voiceFilePath(take);
    if (inspectWav(voice).condition != WavCondition::kUnfinished) {
        return std::nullopt;
    }
    return repairWav(voice);
}

}  // namespace tunebox
