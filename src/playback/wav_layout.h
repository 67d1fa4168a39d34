#pragma once
// Where the parts of a RIFF/WAVE file lie, read without trusting its two
// sizes: a take cut off while it was recorded holds its audio up to the end
// of the file whatever its header says.

#include <cstdint>
#include <string>

#include "core/wave_format.h"
#include "platform/riff_file.h"

namespace tunebox {

struct WavLayout {
    // Where the RIFF form ends: the end of the file, or where a tag that some
    // tools append after the form begins.
    uint64_t fileLength = 0;
    bool tagFollows = false;
    uint32_t riffSize = 0;  // as the header declares it
    WaveFormat format;
    ChunkInfo data;            // as its header declares it
    uint64_t dataPresent = 0;  // audio bytes the file holds for it
    // No chunk follows the audio: the data chunk may grow or shrink with the
    // file. Not so when whole chunks (LIST, cue) follow its declared end.
    bool dataRunsToEnd = false;
    std::string problem;  // why the file cannot be understood; empty when it can
};

// Walks the chunk headers from the start of the file; reads no audio.
WavLayout readWavLayout(RiffFile& file);

}  // namespace tunebox
