#pragma once
// The settings file "Tunebox.INI": the manual delay and its switch, the
// calibration of each pair of devices, the last folder of each file picker,
// the last take's file, whether a take writes its voice file, the window's
// language and the preferred MP3 decoder. It lives in
// $TUNEBOX_CONFIG_DIR, else $XDG_CONFIG_HOME/tunebox, else ~/.config/tunebox.
// Nothing here reports a failure: a missing file reads as the defaults and a
// write that fails is forgotten.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace tunebox {

inline constexpr std::size_t kFolderBufferBytes = 260;

std::filesystem::path settingsPath();

// The dialog's members behind the manual-delay edit and check box.
struct SyncSettings {
    std::string manualDelayText;  // as typed, unparsed
    int32_t manualDelayFlag = 0;  // 0 or 1
};

// Leaves the text as it was when no delay is stored; the flag is on only for
// a stored 1.
void readSyncSettings(SyncSettings& settings);
void writeSyncSettings(const SyncSettings& settings);

// The correction `calibrate --save` measured for a pair of devices (see
// AudioBackend::devicePair): bytes to add to the delay the device positions
// give. None for a pair never calibrated.
std::optional<int32_t> readCalibration(const std::string& devicePair);
void writeCalibration(const std::string& devicePair, int32_t correctionBytes);

enum class FolderPicker { kKaraoke, kMic };

// The folder the picker should open in; empty when none is remembered.
std::string readFolder(FolderPicker picker);

// Remembers the folder of a file the user picked, with its trailing separator.
void writeFolder(FolderPicker picker, const std::filesystem::path& pickedFile);

// The file the last take was recorded into, so that a take a crash cut short
// can be found again at the next start; empty when none is remembered.
std::string readLastTake();
void writeLastTake(const std::filesystem::path& take);

// 1 when a take also writes its voice alone beside it (the default), 0 when
// not.
int readVoiceFileChoice();
void writeVoiceFileChoice(int enabled);

// The window's language as the user wrote it ("ja", "en"); empty when none
// is chosen.
std::string readLanguageChoice();

// 1 when the built-in MPEG decoder is to be tried first, 0 for the codec
// manager.
int readDecoderChoice();

// The artist an exported take is tagged with unless the command names one;
// empty when none is set. The user edits it by hand.
std::string readExportArtist();

}  // namespace tunebox
