#pragma once
// Song time from device time. At a tempo other than 100 % a second of the
// device is not a second of the song: at 80 % the device plays 75 s while
// the song moves on by 60. The clock counts device bytes of each stretch of
// constant tempo at that tempo. A change of tempo is counted from the moment
// it is made, though the device plays the blocks already filled (under a
// second) at the old one: the display is off by that little until the run
// restarts.

#include <cstdint>

#include "effects/key_tempo.h"

namespace tunebox {

class SongClock {
  public:
    // A device run begins at device byte 0.
    void startRun(int tempoPercent) {
        deviceAnchor_ = 0;
        songAnchor_ = 0;
        tempoPercent_ = tempoPercent;
    }

    void changeTempo(uint32_t deviceBytes, int tempoPercent) {
        songAnchor_ = songBytes(deviceBytes);
        deviceAnchor_ = deviceBytes;
        tempoPercent_ = tempoPercent;
    }

    // Song bytes played in this run for `deviceBytes` played by the device.
    uint32_t songBytes(uint32_t deviceBytes) const {
        if (deviceBytes < deviceAnchor_) {
            return songAnchor_;
        }
        const uint64_t sinceChange = deviceBytes - deviceAnchor_;
        return songAnchor_ + static_cast<uint32_t>(sinceChange * tempoPercent_ / kFullTempo);
    }

  private:
    uint32_t deviceAnchor_ = 0;
    uint32_t songAnchor_ = 0;
    int tempoPercent_ = kFullTempo;
};

}  // namespace tunebox
