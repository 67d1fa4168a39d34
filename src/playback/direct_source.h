#pragma once
// Reading and seeking a source whose file bytes are native PCM as they stand
// (conversion flag 0).

#include <cstdint>

#include "platform/riff_file.h"

namespace tunebox {

// Reads up to `requested` bytes into `destination`; `count` becomes the
// number that came. A failed or short read raises `endOfSource`. Returns 1
// when at least one byte came, else 0.
int wavReadDirect(RiffFile& file, uint8_t* destination, uint32_t requested, uint32_t& count,
                  uint32_t& endOfSource);

// Moves to the absolute file offset `position`: the playback engine counts
// its positions from the start of the file, not from the data chunk. Returns
// 1, or 0 when the offset cannot be reached.
int wavSeekDirect(RiffFile& file, uint32_t position);

}  // namespace tunebox
