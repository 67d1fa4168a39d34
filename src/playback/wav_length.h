#pragma once
// The length of an accompaniment file in native-PCM bytes, and as the text
// "mm:ss:ff" the clocks show (ff in 1/75 second, one CD sector).

#include <cstdint>
#include <string>

namespace tunebox {

// Opens the file on a temporary handle and closes it again. Returns 1 with the
// length, or 0 when the file cannot be opened. The length does not depend on
// which MP3 decoder is tried first, so no options are needed.
int wavGetLength(const std::string& path, uint32_t& length);

// The file's length as text. Returns 0 when the file cannot be opened.
int wavFormatLength(const std::string& path, std::string& text);

// The playing time of `dataSize` source bytes at `avgBytesPerSec`, in
// native-PCM bytes rounded to the nearest whole byte, before any check that
// it fits a 32-bit length.
double convertedNativeBytes(uint32_t dataSize, uint32_t avgBytesPerSec);

// Native-PCM bytes as minutes, seconds and sector frames: "%02d:%02d:%02d".
std::string formatSectorTime(uint32_t bytes);

}  // namespace tunebox
