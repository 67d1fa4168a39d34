#pragma once
// Opening an MP3 accompaniment: its tags are read and stripped, its first
// frame found, its length in native-PCM bytes worked out, and a decoder path
// chosen (the codec manager or the built-in decoder, each the other's
// fallback, plus a second stage to the native format when needed).

#include <cstdint>
#include <span>
#include <string>

#include "core/wave_format.h"
#include "platform/riff_file.h"

namespace tunebox {

struct ConversionState;

// Bytes of the file looked at for the first frame.
inline constexpr uint32_t kFirstFrameSearchBytes = 102400;

// Frees the converter stages and the decoder; safe to run twice.
void mp3ReleaseSource(ConversionState& source);

// Opens `path` as MP3. Returns 1 with `file` at the first frame and `length`
// in native-PCM bytes, ready for reading; 0 (logged) otherwise.
int mp3OpenFile(const std::string& path, RiffHandle& file, uint32_t& length,
                ConversionState& source);

// The same from the first frame at or after `startOffset`, without the tags.
int mp3OpenSeekMp3File(const std::string& path, RiffHandle& file, uint32_t& length,
                       ConversionState& source, uint32_t startOffset);

// Opens the preferred decoder path from `sourceFormat` to `nativeFormat`,
// falling back to the other, and adds the second stage when the first does
// not deliver the native format. `firstBytes` are the stream's first bytes.
int mp3SelectDecoder(ConversionState& source, std::span<const uint8_t> sourceFormat,
                     const WaveFormat& nativeFormat, std::span<const uint8_t> firstBytes);

// Moves a converted source to `position` ten-thousandths of its bytes.
int mp3SeekPermyriad(RiffFile& file, uint32_t position, ConversionState& source);

}  // namespace tunebox
