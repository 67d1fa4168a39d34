#pragma once
// The output and input devices the engines play and record through. Buffers
// are queued as headers the caller owns; each comes back through the
// done-callback, on the device's own thread, with kWaveHeaderDone set.
// Positions count bytes actually heard at the output converter and captured
// at the input converter since the device was opened or last reset.

#include <cstdint>
#include <functional>
#include <string>

#include "core/wave_format.h"
#include "core/wave_header.h"
#include "platform/audio_result.h"
#include "platform/output_stalls.h"

namespace tunebox {

// Runs on the device's thread; must not call back into the same device.
using DeviceDoneCallback = std::function<void(WaveHeader&)>;

// Calls shared by both directions.
class AudioDevice {
  public:
    virtual ~AudioDevice() = default;

    virtual AudioResult open(const WaveFormat& format, DeviceDoneCallback onDone) = 0;
    virtual AudioResult prepare(WaveHeader& header) = 0;
    // Refused with kAudioStillPlaying while the header is queued.
    virtual AudioResult unprepare(WaveHeader& header) = 0;
    // Every queued header comes back done; the position starts again at 0.
    virtual AudioResult reset() = 0;
    // Refused with kAudioStillPlaying while any header is queued.
    virtual AudioResult close() = 0;
    virtual AudioResult position(uint32_t& bytes) = 0;
    // What went wrong last, in words, for the one-line error of a command.
    virtual std::string lastError() const = 0;
};

class OutputDevice : public AudioDevice {
  public:
    virtual AudioResult write(WaveHeader& header) = 0;
    virtual AudioResult pause() = 0;
    virtual AudioResult restart() = 0;
    // The stalls so far and where stall number `first` began; a device
    // that cannot tell reports none.
    virtual OutputStalls stalls(uint32_t /*first*/) { return {}; }
};

class InputDevice : public AudioDevice {
  public:
    virtual AudioResult addBuffer(WaveHeader& header) = 0;
    virtual AudioResult start() = 0;
    // The buffer being filled comes back with what it holds; the others stay queued.
    virtual AudioResult stop() = 0;
};

}  // namespace tunebox
