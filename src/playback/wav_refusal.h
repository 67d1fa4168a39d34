#pragma once
// Why an accompaniment file was refused, in words a user can act on.

#include <string>

#include "playback/wav_reader.h"

namespace tunebox {

// What the file system says about a path; the caller looks it up.
enum class PathKind { missing, directory, other };

enum class WavRefusal {
    none,
    missing,
    notReadable,
    directory,
    notWave,
    damaged,
    unsupportedFormat,
};

// Combines the path's kind with how far the WAVE reader got.
WavRefusal classifyRefusal(PathKind kind, WavOpenStatus status);

// A short phrase for the reason, e.g. "no such file".
const char* refusalText(WavRefusal refusal);

}  // namespace tunebox
