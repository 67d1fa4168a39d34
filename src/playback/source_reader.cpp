#include "playback/source_reader.h"

#include <algorithm>
#include <cstdio>

#include "mp3/acm_read.h"
#include "mp3/mp3_open.h"
#include "playback/direct_source.h"

namespace tunebox {

int sourceRead(RiffFile& file, uint8_t* destination, uint32_t requested, uint32_t& count,
               uint32_t& endOfSource, AudioSource& source) {
    if (source.conversionFlag == 1) {
        return mp3AcmRead(file, destination, count, requested, source, endOfSource);
    }
    // Native data is read up to the end of its chunk, never into what follows.
    const int64_t position = file.seek(0, SEEK_CUR);
    const int64_t left = position < 0 ? 0 : std::max<int64_t>(source.sourceDataSize - position, 0);
    const auto allowed = static_cast<uint32_t>(std::min<int64_t>(requested, left));
    const int result = wavReadDirect(file, destination, allowed, count, endOfSource);
    if (allowed < requested) {
        endOfSource = 1;
    }
    return result;
}

int sourceSeek(RiffFile& file, uint32_t position, uint32_t permyriad, AudioSource& source) {
    if (source.conversionFlag == 1) {
        return mp3SeekPermyriad(file, permyriad, source);
    }
    return wavSeekDirect(file, position);
}

}  // namespace tunebox
