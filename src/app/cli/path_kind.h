#pragma once
// What the file system says about a path named on the command line, for
// explaining why a file was refused.

#include <string>

#include "playback/wav_refusal.h"

namespace tunebox::cli {

PathKind pathKindOf(const std::string& path);

}  // namespace tunebox::cli
