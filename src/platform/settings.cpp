#include "platform/settings.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/profile_file.h"

namespace tunebox {
namespace {

constexpr const char* kFileName = "Tunebox.INI";
constexpr const char* kSyncSection = "REC_DIFFERENCE";
constexpr const char* kDelayKey = "DIFF_PLAY_BYTE";
constexpr const char* kManualKey = "MANUAL_DIFF";
constexpr const char* kFolderKey = "PATH";
constexpr const char* kCalibrationSection = "CALIBRATION";
constexpr std::size_t kNumberBytes = 32;
constexpr const char* kLastTakeSection = "LAST_TAKE";
constexpr const char* kVoiceFileSection = "VOICE_FILE";
constexpr const char* kVoiceFileKey = "WRITE";
// A whole path, not a picker's folder: as long as the system allows.
constexpr std::size_t kTakePathBytes = 4096;
constexpr int32_t kAbsent = -1;
constexpr const char* kExportSection = "EXPORT";
constexpr const char* kArtistKey = "ARTIST";

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::filesystem::path homeDirectory() {
    const std::string home = environment("HOME");
    if (!home.empty()) {
        return home;
    }
    const passwd* user = getpwuid(getuid());
    return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

std::filesystem::path settingsDirectory() {
    const std::string overridden = environment("TUNEBOX_CONFIG_DIR");
    if (!overridden.empty()) {
        return overridden;
    }
    // A relative XDG_CONFIG_HOME is invalid and must be ignored.
    const std::filesystem::path xdg = environment("XDG_CONFIG_HOME");
    const std::filesystem::path base = xdg.is_absolute() ? xdg : homeDirectory() / ".config";
    return base / "tunebox";
}

const char* folderSection(FolderPicker picker) {
    return picker == FolderPicker::kKaraoke ? "KARAOKE_FOLDER" : "MIC_FOLDER";
}

}  // namespace

std::filesystem::path settingsPath() {
    return settingsDirectory() / kFileName;
}

void readSyncSettings(SyncSettings& settings) {
    const std::filesystem::path file = settingsPath();
    const int32_t delay = profileReadInt(file, kSyncSection, kDelayKey, kAbsent);
    if (delay != kAbsent) {
        settings.manualDelayText = std::to_string(delay);
    }
    settings.manualDelayFlag = profileReadInt(file, kSyncSection, kManualKey, kAbsent) == 1;
}

void writeSyncSettings(const SyncSettings& settings) {
    const std::filesystem::path file = settingsPath();
    profileWriteString(file, kSyncSection, kDelayKey, settings.manualDelayText);
    profileWriteString(file, kSyncSection, kManualKey, settings.manualDelayFlag == 1 ? "1" : "0");
}

std::optional<int32_t> readCalibration(const std::string& devicePair) {
    if (devicePair.empty()) {
        return std::nullopt;
    }
    const std::string text =
        profileReadString(settingsPath(), kCalibrationSection, devicePair, "", kNumberBytes);
    if (text.empty()) {
        return std::nullopt;
    }
    return profileReadInt(settingsPath(), kCalibrationSection, devicePair, 0);
}

void writeCalibration(const std::string& devicePair, int32_t correctionBytes) {
    profileWriteString(settingsPath(), kCalibrationSection, devicePair,
                       std::to_string(correctionBytes));
}

std::string readFolder(FolderPicker picker) {
    return profileReadString(settingsPath(), folderSection(picker), kFolderKey, "",
                             kFolderBufferBytes);
}

void writeFolder(FolderPicker picker, const std::filesystem::path& pickedFile) {
    std::string folder = pickedFile.parent_path().string();
    if (!folder.empty() && folder.back() != '/') {
        folder += '/';
    }
    profileWriteString(settingsPath(), folderSection(picker), kFolderKey, folder);
}

std::string readLastTake() {
    return profileReadString(settingsPath(), kLastTakeSection, kFolderKey, "", kTakePathBytes);
}

void writeLastTake(const std::filesystem::path& take) {
    profileWriteString(settingsPath(), kLastTakeSection, kFolderKey, take.string());
}

// Only a stored 0 turns it off: a file from before the switch keeps it on.
int readVoiceFileChoice() {
    return profileReadInt(settingsPath(), kVoiceFileSection, kVoiceFileKey, kAbsent) != 0;
}

void writeVoiceFileChoice(int enabled) {
    profileWriteString(settingsPath(), kVoiceFileSection, kVoiceFileKey, enabled == 1 ? "1" : "0");
}

std::string readLanguageChoice() {
    return profileReadString(settingsPath(), "UI", "LANG", "", kNumberBytes);
}

std::string readExportArtist() {
    return profileReadString(settingsPath(), kExportSection, kArtistKey, "", kTakePathBytes);
}

int readDecoderChoice() {
    return profileReadInt(settingsPath(), "MP3_DECODER", "ORIGINAL", kAbsent) == 1;
}

}  // namespace tunebox
