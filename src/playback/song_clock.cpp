#include "playback/song_clock.h"

#include <algorithm>

namespace tunebox {

void SongClock::startRun() {
    count_ = 0;
    deviceEnd_ = 0;
    songEndHundredths_ = 0;
}

void SongClock::addBlock(uint32_t deviceBytes, int tempoPercent) {
    if (deviceBytes == 0) {
        return;
    }
    blocks_[count_ % kBlocks] = {deviceEnd_, songEndHundredths_, deviceBytes, tempoPercent};
    ++count_;
    deviceEnd_ += deviceBytes;
    songEndHundredths_ += uint64_t{deviceBytes} * static_cast<uint64_t>(tempoPercent);
}

uint32_t SongClock::songBytes(uint32_t deviceBytes) const {
    if (count_ == 0) {
        return 0;
    }
    // The device never plays past what it was given.
    const uint64_t played = std::min<uint64_t>(deviceBytes, deviceEnd_);
    const std::size_t kept = std::min(count_, kBlocks);
    for (std::size_t back = 1; back <= kept; ++back) {
        const Block& block = blocks_[(count_ - back) % kBlocks];
        if (played >= block.deviceStart || back == kept) {
            const uint64_t into = played > block.deviceStart ? played - block.deviceStart : 0;
            const uint64_t within = std::min<uint64_t>(into, block.bytes);
            const uint64_t hundredths =
                block.songStartHundredths + within * static_cast<uint64_t>(block.tempoPercent);
            return static_cast<uint32_t>(hundredths / 100);
        }
    }
    return 0;
}

}  // namespace tunebox
