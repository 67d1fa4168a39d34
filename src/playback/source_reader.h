#pragma once
// Reading and seeking an open accompaniment, whichever way its bytes become
// native PCM: straight from the file, or through the converter.

#include <cstdint>

#include "platform/riff_file.h"
#include "playback/audio_source.h"

namespace tunebox {

// Reads up to `requested` native-PCM bytes, never past the source's data;
// `count` becomes the bytes read, and `endOfSource` 1 when the source ran
// out. Returns 1 when bytes came (or, converted, when no conversion
// failed), else 0.
int sourceRead(RiffFile& file, uint8_t* destination, uint32_t requested, uint32_t& count,
               uint32_t& endOfSource, AudioSource& source);

// Moves to native-PCM byte `position`, which is `permyriad` ten-thousandths
// of the length: a direct source seeks the file offset equal to the
// position, a converted one seeks by the fraction.
int sourceSeek(RiffFile& file, uint32_t position, uint32_t permyriad, AudioSource& source);

}  // namespace tunebox
