#include "app/cli/source_to_wav.h"

#include <vector>

#include "app/cli/commands.h"
#include "app/cli/input_checks.h"
#include "platform/staged_output.h"
#include "playback/wav_writer.h"

namespace tunebox::cli {
namespace {

constexpr int kExitFailure = 1;

// Copies the source into the writer; 0 or the exit status after one line.
int pump(OpenedSource& source, const WavJob& job, WaveWriter& writer, uint64_t& written) {
    std::vector<uint8_t> block(kEngineBlockBytes);
    for (;;) {
        const BlockRead read = job.make ? job.make(block.data(), kEngineBlockBytes)
                                        : source.read(block.data(), kEngineBlockBytes);
        if (read.count > 0) {
            if (job.step) {
                job.step(block.data(), read.count);
            }
            if (wavWrite(writer, block.data(), read.count) != 1) {
                return refuse(job.output, "could not be written (disk full?)", kExitFailure);
            }
            written += read.count;
        }
        if (read.failed) {
            return refuse(job.input, "a frame could not be decoded", kExitFailure);
        }
        if (read.ended) {
            return 0;
        }
    }
}

}  // namespace

int writeSourceAsWav(OpenedSource& source, const WavJob& job, uint64_t& written) {
    written = 0;
    std::string error;
    const auto staged = StagedOutput::create(job.output, error);
    if (!staged) {
        return refuse(job.output, error, kExitFailure);
    }
    WaveWriter writer;
    wavResetWriter(writer);
    writer.format = job.format;
    if (wavCreateFile(staged->stagingPath(), writer) != 1) {
        return refuse(job.output, "cannot be created", kExitFailure);
    }
    const int status = pump(source, job, writer, written);
    const bool finished = wavCloseFile(writer) == 1;
    if (status != 0) {
        return status;
    }
    if (written == 0) {
        return refuse(job.input, kNoAudio, kExitBadInput);
    }
    if (!finished) {
        return refuse(job.output, "could not be finished (disk full?)", kExitFailure);
    }
    if (!staged->commit(error)) {
        return refuse(job.output, error, kExitFailure);
    }
    return 0;
}

}  // namespace tunebox::cli
