#include "app/cli/demo_tune_file.h"

#include <iostream>
#include <vector>

#include "app/cli/commands.h"
#include "app/demo_tune.h"
#include "platform/little_endian.h"
#include "playback/wav_length.h"
#include "playback/wav_writer.h"

namespace tunebox::cli {
namespace {

std::vector<uint8_t> littleEndianBytes(const std::vector<int16_t>& samples) {
    std::vector<uint8_t> bytes(samples.size() * 2);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        storeLe16(&bytes[2 * i], static_cast<uint16_t>(samples[i]));
    }
    return bytes;
}

}  // namespace

int writeDemoTuneFile(const std::string& path) {
    const std::vector<uint8_t> bytes = littleEndianBytes(synthesiseDemoTune());
    WaveWriter writer;
    wavResetWriter(writer);
    if (wavCreateFile(path, writer) != 1) {
        std::cerr << "tunebox: " << path << ": cannot be created\n";
        return kExitBadInput;
    }
    const int written = wavWrite(writer, bytes.data(), static_cast<uint32_t>(bytes.size()));
    if (wavCloseFile(writer) != 1 || written != 1) {
        std::cerr << "tunebox: " << path << ": could not be written completely\n";
        return kExitBadInput;
    }
    std::cout << path << ": demo accompaniment, "
              << formatSectorTime(static_cast<uint32_t>(bytes.size())) << "\n";
    return 0;
}

}  // namespace tunebox::cli
