#pragma once
// Opens an accompaniment file as an audio source: RIFF/WAVE files whose data
// is native PCM are read as they stand, other PCM, G.711 and MPEG data goes
// through the converter, and files of any other kind go to the MP3 opener.
// Formats that cannot be real and sources longer than a 32-bit length are
// refused outright, with the reason in the source.

#include <cstdint>
#include <string>

#include "platform/riff_file.h"
#include "playback/audio_source.h"

namespace tunebox {

// How far opening a file as RIFF/WAVE got.
enum class WavOpenStatus {
    opened,
    cannotOpen,   // the path gives no readable regular file
    notWave,      // no RIFF/WAVE form in the file
    damaged,      // a WAVE file with a missing, short or oversized part
    unsupported,  // a WAVE file whose format cannot be read (yet)
    refused,      // a format or length that cannot be real; the source says why
};

// Reads the RIFF/WAVE structure of `path`. Opened: `file` stands at the first
// data byte and `length` is the data chunk's size; the source holds the
// file's format. An unknown format tag leaves `file` open for the next opener
// to replace; every other failure closes it. Refused files are not for any
// other opener either.
WavOpenStatus wavExamineWaveFile(const std::string& path, RiffHandle& file, uint32_t& length,
                                 AudioSource& source);

// The same as 1 (opened) or 0.
int wavOpenWaveFile(const std::string& path, RiffHandle& file, uint32_t& length,
                    AudioSource& source);

// From the current position, finds the "data" chunk and reads up to `size`
// bytes of it into `buffer`; `size` becomes the count read. The position is
// restored. Returns 0 when there is no data chunk or nothing came, else 1.
int wavReadDataHead(RiffFile& file, uint8_t* buffer, int64_t& size);

// The one way to open an accompaniment: resets the source, tries the file as
// WAVE, then as any other kind. The length lands in `length` and in the
// source's output length. Returns 1 or 0.
int wavOpenSource(const std::string& path, RiffHandle& file, uint32_t& length, AudioSource& source,
                  uint32_t forceOwnDecoder);

// The same for a source already reset whose decoder preference the caller
// has chosen.
int wavOpenResetSource(const std::string& path, RiffHandle& file, uint32_t& length,
                       AudioSource& source);

// Closes the file (if open) and releases the source's decoder state.
void wavCloseSource(RiffHandle& file, AudioSource& source);

}  // namespace tunebox
