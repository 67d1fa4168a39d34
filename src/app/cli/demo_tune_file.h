#pragma once
// The demo accompaniment written as a WAV file, for the tune and demo
// commands.

#include <string>

namespace tunebox::cli {

// Writes the file and says so on stdout; returns 0, or kExitBadInput after a
// one-line error.
int writeDemoTuneFile(const std::string& path);

}  // namespace tunebox::cli
