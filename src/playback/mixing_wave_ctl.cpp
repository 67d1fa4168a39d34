#include "playback/mixing_wave_ctl.h"

#include "core/diagnostic_log.h"

namespace tunebox {

MixingWaveCtl::~MixingWaveCtl() {
    wavStop();
}

int MixingWaveCtl::prefill() {
    return prefillWith(&MixingWaveCtl::write1Buf);
}

int MixingWaveCtl::fillOne() {
    return fillOneWith(&MixingWaveCtl::write1Buf);
}

// A full ring loses the copy, never the playback: the mix then misses a
// block, which the log tells.
void MixingWaveCtl::write1Buf(WaveCtl& player, const uint8_t* bytes, uint32_t count,
                              uint32_t last) {
    if (static_cast<MixingWaveCtl&>(player).mixBuf_.put(bytes, count, last) == 0) {
        logAlways("Write1Buf:ﾊﾞｯﾌｧｵﾊﾞｰﾌﾛｰ");
    }
}

}  // namespace tunebox
