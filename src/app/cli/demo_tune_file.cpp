#include "app/cli/demo_tune_file.h"

#include <iostream>
#include <vector>

#include "app/cli/commands.h"
#include "app/cli/input_checks.h"
#include "session/demo_tune.h"
#include "core/little_endian.h"
#include "platform/staged_output.h"
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
    std::string error;
    const auto staged = StagedOutput::create(path, error);
    if (!staged) {
        return refuse(path, error, kExitBadInput);
    }
    WaveWriter writer;
    wavResetWriter(writer);
    if (wavCreateFile(staged->stagingPath(), writer) != 1) {
        return refuse(path, "cannot be created", kExitBadInput);
    }
    const int written = wavWrite(writer, bytes.data(), static_cast<uint32_t>(bytes.size()));
    if (wavCloseFile(writer) != 1 || written != 1) {
        return refuse(path, "could not be written completely", kExitBadInput);
    }
    if (!staged->commit(error)) {
        return refuse(path, error, kExitBadInput);
    }
    // Standard output may be carrying the file itself.
    std::ostream& status = path == "-" ? std::cerr : std::cout;
    status << path << ": demo accompaniment, "
           << formatSectorTime(static_cast<uint32_t>(bytes.size())) << "\n";
    return 0;
}

}  // namespace tunebox::cli
