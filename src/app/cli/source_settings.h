#pragma once
// How the commands open their sources, as the settings file says.

#include "playback/source_options.h"

namespace tunebox::cli {

SourceOptions sourceOptionsFromSettings();

}  // namespace tunebox::cli
