#pragma once
// The file beside a take that holds its voice alone.

#include <optional>
#include <string>

#include "playback/wav_repair.h"

namespace tunebox {

// "song.wav" gives "song.voice.wav"; a take named without an extension gets
// ".voice.wav" appended.
std::string voiceFilePath(const std::string& take);

// A crash cuts the voice file off with its take, so the repair of a take
// finishes the voice file beside it too. Null when there is none, or it is
// not unfinished: such a file is left as it is.
std::optional<RepairResult> repairVoiceFile(const std::string& take);

}  // namespace tunebox
