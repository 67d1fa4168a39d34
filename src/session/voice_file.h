#pragma once
// The file beside a take that holds its voice alone.

#include <string>

namespace tunebox {

// "song.wav" gives "song.voice.wav"; a take named without an extension gets
// ".voice.wav" appended.
std::string voiceFilePath(const std::string& take);

}  // namespace tunebox
