#pragma once
// The RIFF/WAVE reader: WAVE files whose data is native PCM are read as they
// stand, other PCM, G.711 and MPEG data goes through the converter. Formats
// that cannot be real and sources longer than a 32-bit length are refused
// outright, with the reason in the conversion state.

#include <array>
#include <cstdint>
#include <string>

#include "mp3/conversion_state.h"
#include "platform/riff_file.h"

namespace tunebox {

inline constexpr uint32_t kFormWave = fourCc("WAVE");
inline constexpr uint32_t kChunkFormat = fourCc("fmt ");
inline constexpr uint32_t kChunkData = fourCc("data");

// The "fmt " chunk's bytes as far as any accepted format needs them.
using FormatChunk = std::array<uint8_t, kSourceFormatBytes>;

// How far opening a file as RIFF/WAVE got.
enum class WavOpenStatus {
    opened,
    cannotOpen,   // the path gives no readable regular file
    notWave,      // no RIFF/WAVE form in the file
    damaged,      // a WAVE file with a missing, short or oversized part
    unsupported,  // a WAVE file whose format cannot be read (yet)
    refused,      // a format or length that cannot be real; the state says why
};

// Reads the RIFF/WAVE structure of `path`. Opened: `file` stands at the first
// data byte and `length` is the data chunk's size (a converted file's
// native-PCM length); the state holds the file's format, its data's end and,
// when converted, the open decoder path. An unknown format tag leaves `file` open for the next
// opener to replace; every other failure closes it. Refused files are not for any other opener
// either.
WavOpenStatus wavExamineWaveFile(const std::string& path, RiffHandle& file, uint32_t& length,
                                 ConversionState& source);

// From the current position, finds the "fmt " chunk within `riff` and reads it
// into `bytes`, leaving the file after it: opened, damaged (missing or cut
// short) or unsupported (longer than any accepted format). An extensible
// record of plain PCM comes out as the same record with format tag 1.
WavOpenStatus wavReadFormatChunk(RiffFile& file, const ChunkInfo& riff, FormatChunk& bytes);

// The same as 1 (opened) or 0.
int wavOpenWaveFile(const std::string& path, RiffHandle& file, uint32_t& length,
                    ConversionState& source);

// From the current position, finds the "data" chunk and reads up to `size`
// bytes of it into `buffer`; `size` becomes the count read. The position is
// restored. Returns 0 when there is no data chunk or nothing came, else 1.
int wavReadDataHead(RiffFile& file, uint8_t* buffer, int64_t& size);

// Closes the file (if open) and releases the decoder state.
void wavCloseSource(RiffHandle& file, ConversionState& source);

}  // namespace tunebox
