#include "app/gui/key_tempo_memory.h"

#include <cstdint>
#include <filesystem>
#include <sstream>

#include "platform/profile_file.h"
#include "platform/settings.h"

namespace tunebox::gui {
namespace {

constexpr const char* kSwitchSection = "KEY_TEMPO";
constexpr const char* kSwitchKey = "REMEMBER";
constexpr const char* kSongsSection = "KEY_TEMPO_SONGS";
constexpr std::size_t kLineBytes = 64;

// Profile keys match without regard to case and end at '=', so a path
// cannot be a key itself: its 64-bit FNV-1a hash stands in for it.
std::string songKey(const std::string& path) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    const std::string name = error ? path : absolute.lexically_normal().string();
    uint64_t hash = 0xcbf29ce484222325ULL;
    for (const unsigned char byte : name) {
        hash = (hash ^ byte) * 0x100000001b3ULL;
    }
    std::ostringstream key;
    key << std::hex << hash;
    return key.str();
}

bool showable(const KeyTempo& keyTempo) {
    return keyTempo.semitones >= -kMaxSemitones && keyTempo.semitones <= kMaxSemitones &&
           keyTempo.cents >= -kMaxCents && keyTempo.cents <= kMaxCents &&
           keyTempo.tempoPercent >= kSlowestTempo && keyTempo.tempoPercent <= kFastestTempo;
}

}  // namespace

bool keyTempoRemembered() {
    return profileReadInt(settingsPath(), kSwitchSection, kSwitchKey, 1) != 0;
}

std::optional<KeyTempo> recallKeyTempo(const std::string& path) {
    std::istringstream line(
        profileReadString(settingsPath(), kSongsSection, songKey(path), "", kLineBytes));
    KeyTempo keyTempo;
    int formants = 0;
    if (!(line >> keyTempo.semitones >> keyTempo.cents >> keyTempo.tempoPercent >> formants) ||
        !showable(keyTempo)) {
        return std::nullopt;
    }
    keyTempo.preserveFormants = formants == 1;
    return keyTempo;
}

void rememberKeyTempo(const std::string& path, const KeyTempo& keyTempo) {
    std::ostringstream line;
    line << keyTempo.semitones << ' ' << keyTempo.cents << ' ' << keyTempo.tempoPercent << ' '
         << (keyTempo.preserveFormants ? 1 : 0);
    profileWriteString(settingsPath(), kSongsSection, songKey(path), line.str());
}

}  // namespace tunebox::gui
