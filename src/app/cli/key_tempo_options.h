#pragma once
// The --key, --cents, --tempo and --keep-formants options of the commands
// that play or render an accompaniment.

#include <CLI/CLI.hpp>

#include "effects/key_tempo.h"

namespace tunebox::cli {

void addKeyTempoOptions(CLI::App& command, KeyTempo& keyTempo);

}  // namespace tunebox::cli
