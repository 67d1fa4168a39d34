#pragma once
// Song time from device time. At a tempo other than 100 % a second of the
// device is not a second of the song: at 80 % the device plays 75 s while
// the song moves on by 60. Each block handed to the device is noted with the
// tempo it was made at, so a played byte maps to the song position it came
// from even while blocks made before a change of tempo are still playing.
//
// The notes live in a fixed ring: nothing is allocated while audio flows.

#include <array>
#include <cstddef>
#include <cstdint>

namespace tunebox {

class SongClock {
  public:
    // A device run begins at device byte 0, before its first block.
    void startRun();

    // The next block of the run: `deviceBytes` long, made at `tempoPercent`.
    void addBlock(uint32_t deviceBytes, int tempoPercent);

    // Song bytes played in this run for `deviceBytes` played by the device.
    uint32_t songBytes(uint32_t deviceBytes) const;

  private:
    struct Block {
        uint64_t deviceStart = 0;
        // Song bytes before the block, times 100, so that no rounding adds up.
        uint64_t songStartHundredths = 0;
        uint32_t bytes = 0;
        int tempoPercent = 0;
    };

    // Far more than the device ever holds at once: the oldest are long
    // played when they are overwritten.
    static constexpr std::size_t kBlocks = 64;

    std::array<Block, kBlocks> blocks_{};
    std::size_t count_ = 0;  // blocks noted in this run, overwritten ones too
    uint64_t deviceEnd_ = 0;
    uint64_t songEndHundredths_ = 0;
};

}  // namespace tunebox
