#pragma once
// The demo accompaniment written as a WAV file, for the tune and demo
// commands.

#include <string>

namespace tunebox::cli {

// Writes the file ("-": standard output) and says so; returns 0, or
// kExitBadInput after a one-line error. A file of the name is replaced only
// by a complete one.
int writeDemoTuneFile(const std::string& path);

}  // namespace tunebox::cli
