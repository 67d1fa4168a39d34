#include "playback/mix_buf_writer.h"

#include "core/diagnostic_log.h"

namespace tunebox {

// A full ring loses the copy, never the playback: the mix then misses a
// block, which the log tells.
void MixBufWriter::onBlock(const uint8_t* bytes, uint32_t count, uint32_t last) {
    if (mixBuf_.put(bytes, count, last) == 0) {
        logAlways("Write1Buf:ﾊﾞｯﾌｧｵﾊﾞｰﾌﾛｰ");
    }
}

}  // namespace tunebox
