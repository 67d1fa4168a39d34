#pragma once
// Writes a recording as a RIFF/WAVE file in the native format: a 44-byte
// header, then the samples. While the file is written its two sizes are
// kept up to date and the data is pushed to the disk in the background, so a
// process killed mid-take leaves a file that plays all but its last moments;
// the close writes the final sizes.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/wave_format.h"
#include "platform/background_flusher.h"
#include "platform/riff_file.h"

namespace tunebox {

// How much audio may be written before the header is brought up to date.
// A capture block (about half a second) is still being filled at the device
// when the process dies; this much more keeps the loss under a second.
inline constexpr uint32_t kHeaderRefreshBytes = kNativeBytesPerSecond / 4;

struct WaveWriter {
    ChunkInfo subChunk;  // "fmt ", then "data"
    ChunkInfo riffChunk;
    WaveFormat format;  // written without its extra size (16 bytes)
    RiffHandle file;    // null while closed
    // Bytes after which the header is refreshed; 0 leaves the sizes to the
    // close.
    uint32_t refreshBytes = kHeaderRefreshBytes;
    uint32_t unpublishedBytes = 0;               // written since the header last covered them
    std::unique_ptr<BackgroundFlusher> flusher;  // while the file is open
};

// Zeroes the record and sets its format to the native format. Any file still
// open through it is closed without its final sizes.
void wavResetWriter(WaveWriter& writer);

// A chunk of notes about the recording: written between "fmt " and "data"
// when the file is created, so that a take cut off by a crash still has it,
// or after "data" when the file is closed, for what is only known by then.
// Readers that look for "data" pass over it.
struct NoteChunk {
    uint32_t id = 0;
    std::vector<uint8_t> bytes;
};

// Creates the file and writes the header, with `note` before the audio when
// given; without a note the file then stands at offset 44. Returns 1, or 0
// when the file cannot be created.
int wavCreateFile(const std::string& path, WaveWriter& writer, const NoteChunk* note = nullptr);

// Appends samples, refreshing the header when `refreshBytes` have gathered.
// Returns 1, or 0 when they could not be written or the header not refreshed
// or an earlier flush to the disk failed.
int wavWrite(WaveWriter& writer, const uint8_t* bytes, uint32_t count);

// Writes both sizes into the header, with `note` after the audio when given,
// and closes the file. Returns 1, or 0 when the file could not be finished
// or a flush to the disk failed.
int wavCloseFile(WaveWriter& writer, const NoteChunk* note = nullptr);

}  // namespace tunebox
