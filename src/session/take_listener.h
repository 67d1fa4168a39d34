#pragma once
// What the take controller tells its owner: which button faces to light,
// the microphone levels, capture faults, which player's tick to run and
// what the read-outs show. The controller runs on its owner's thread and
// calls these there. Every call has a do-nothing default, so an owner
// without a face or a meter (the command line) overrides only what it shows.

#include <cstdint>
#include <optional>

#include "capture/rec_wav.h"

namespace tunebox {

enum class TakePlayer { kAccompaniment, kRecorded };

enum class TakeButton {
    kAccompanimentPlay,
    kAccompanimentPause,
    kRecordedPlay,
    kRecordedPause,
    kRecord,
    kMonitor,
};

// The accompaniment's position display at one refresh.
struct AccompanimentReadout {
    std::optional<int> trackbar;  // empty: leave the held thumb alone
    int32_t delay = 0;            // the delay read-out, bytes
    uint32_t position = 0;        // where the next open starts, bytes
};

class TakeListener {
  public:
    virtual ~TakeListener() = default;

    // `lit`: the button's active face (playing, paused, recording, monitoring).
    virtual void showFace(TakeButton, bool /*lit*/) {}
    virtual void showLevels(int32_t /*first*/, int32_t /*second*/) {}
    // Called from inside the capture pump, which may be running under a stop
    // that waits for its buffers: end the take later, with endFaultedTake.
    virtual void captureFaulted(CaptureFault) {}
    // The owner runs `tick(player)` every kTickMilliseconds while running.
    virtual void tickerChanged(TakePlayer, bool /*running*/) {}
    virtual void showAccompaniment(const AccompanimentReadout&) {}
    virtual void showRecordedTrackbar(int /*value*/) {}
    // Where the audition is, bytes, at each of its refreshes.
    virtual void showRecordedPosition(uint32_t /*bytes*/) {}
    virtual void showStartPositions(uint32_t /*playback*/, uint32_t /*capture*/) {}
    // While capture drains at a stop, the recorder's STOP and PLAY are off.
    virtual void recorderStopping(bool /*stopping*/) {}
    // A block reached full scale (the take's or the monitored microphone's);
    // `clippedBlocks` counts them since capture started.
    virtual void blockClipped(uint32_t /*clippedBlocks*/) {}
    // A take (not the monitor) is finished, with how many of its blocks
    // reached full scale.
    virtual void takeEnded(uint32_t /*clippedBlocks*/) {}
    // Once a take over an accompaniment has ended: where (bytes into the
    // take) its voice stopped lining up, because the output stalled in a way
    // that could not be made good. Not called for a take in sync.
    virtual void takeOutOfSync(uint64_t /*fromBytes*/) {}
};

}  // namespace tunebox
