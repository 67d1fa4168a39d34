#pragma once
// Reads an opened source to its end into a new WAV file, for the commands
// that turn one file into another. The output takes the place of any file of
// its name only once it is complete; standard output is "-".

#include <cstdint>
#include <functional>
#include <string>

#include "app/cli/opened_source.h"
#include "core/wave_format.h"

namespace tunebox::cli {

// Sees (and may change) each block before it is written.
using BlockStep = std::function<void(uint8_t* bytes, uint32_t count)>;
// Makes the next block out of the source, for a stage that reads more or
// less than it gives.
using BlockMaker = std::function<BlockRead(uint8_t* block, uint32_t capacity)>;

struct WavJob {
    std::string input;   // for messages
    std::string output;  // "-": standard output
    WaveFormat format = kNativeFormat;
    BlockStep step;
    BlockMaker make;  // none: the source's blocks as they are
};

// Returns 0 with `written` the data bytes, or the exit status after one line
// on stderr: kExitBadInput when the source yields no audio, 1 when a block
// cannot be decoded or the output cannot be written.
int writeSourceAsWav(OpenedSource& source, const WavJob& job, uint64_t& written);

}  // namespace tunebox::cli
