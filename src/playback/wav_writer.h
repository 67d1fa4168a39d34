#pragma once
// Writes a recording as a RIFF/WAVE file in the native format: a 44-byte
// header whose two sizes are filled in at close, then the samples.

#include <cstdint>
#include <string>

#include "platform/riff_file.h"
#include "core/wave_format.h"

namespace tunebox {

struct WaveWriter {
    ChunkInfo subChunk;  // "fmt ", then "data"
    ChunkInfo riffChunk;
    WaveFormat format;  // written without its extra size (16 bytes)
    RiffHandle file;    // null while closed
};

// Zeroes the record and sets its format to the native format. Any file still
// open through it is closed without its sizes.
void wavResetWriter(WaveWriter& writer);

// Creates the file and writes the header; the file then stands at offset 44.
// Returns 1, or 0 when the file cannot be created.
int wavCreateFile(const std::string& path, WaveWriter& writer);

// Appends samples. Returns 1, or 0 when they could not be written.
int wavWrite(WaveWriter& writer, const uint8_t* bytes, uint32_t count);

// Writes both sizes into the header and closes the file. Returns 1, or 0 when
// the file could not be finished.
int wavCloseFile(WaveWriter& writer);

}  // namespace tunebox
