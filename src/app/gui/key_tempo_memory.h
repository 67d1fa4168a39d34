#pragma once
// The key and tempo each accompaniment was last played with, kept in the
// settings file, so that picking a song again brings its key back. A switch
// in the settings file ("[KEY_TEMPO] REMEMBER=0") turns the memory off.

#include <optional>
#include <string>

#include "effects/key_tempo.h"

namespace tunebox::gui {

// On unless the settings file says 0.
bool keyTempoRemembered();

// What `path` was last played with; none when it never was, or when the
// stored line is not a key and tempo the controls can show.
std::optional<KeyTempo> recallKeyTempo(const std::string& path);
void rememberKeyTempo(const std::string& path, const KeyTempo& keyTempo);

}  // namespace tunebox::gui
