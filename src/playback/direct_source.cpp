#include "playback/direct_source.h"

#include <cstdio>

namespace tunebox {

int wavReadDirect(RiffFile& file, uint8_t* destination, uint32_t requested, uint32_t& count,
                  uint32_t& endOfSource) {
    const int64_t got = file.read(destination, requested);
    count = got < 0 ? 0 : static_cast<uint32_t>(got);
    if (count < requested) {
        endOfSource = 1;
    }
    return count > 0 ? 1 : 0;
}

int wavSeekDirect(RiffFile& file, uint32_t position) {
    return file.seek(position, SEEK_SET) >= 0 ? 1 : 0;
}

}  // namespace tunebox
