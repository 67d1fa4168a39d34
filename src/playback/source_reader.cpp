#include "playback/source_reader.h"

#include "mp3/acm_read.h"
#include "mp3/mp3_open.h"
#include "playback/direct_source.h"

namespace tunebox {

int sourceRead(RiffFile& file, uint8_t* destination, uint32_t requested, uint32_t& count,
               uint32_t& endOfSource, AudioSource& source) {
    if (source.conversionFlag == 1) {
        return mp3AcmRead(file, destination, count, requested, source, endOfSource);
    }
    return wavReadDirect(file, destination, requested, count, endOfSource);
}

int sourceSeek(RiffFile& file, uint32_t position, uint32_t permyriad, AudioSource& source) {
    if (source.conversionFlag == 1) {
        return mp3SeekPermyriad(file, permyriad, source);
    }
    return wavSeekDirect(file, position);
}

}  // namespace tunebox
