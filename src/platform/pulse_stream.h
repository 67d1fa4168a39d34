#pragma once
// One playback or record stream with its queue of headers: what the
// PulseAudio output and input devices have in common. Public calls take the
// main loop's lock; the stream's callbacks run on the loop's thread with the
// lock held; finished headers go back through the device's own thread.

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

#include "platform/audio_device.h"
#include "platform/cycle_origin.h"
#include "platform/device_buffers.h"
#include "platform/pulse_connection.h"
#include "platform/tick_spacing.h"

namespace tunebox {

class PulseStream {
  public:
    enum class Direction { playback, record };

    PulseStream(std::string server, Direction direction);
    ~PulseStream();
    PulseStream(const PulseStream&) = delete;
    PulseStream& operator=(const PulseStream&) = delete;

    AudioResult open(const WaveFormat& format, DeviceDoneCallback onDone);
    AudioResult queue(WaveHeader& header);
    AudioResult setCorked(bool corked);
    // Record: cork, take in what the server already sent, and return the
    // buffer being filled with what it holds.
    AudioResult stopRecording();
    AudioResult reset();
    AudioResult close();
    AudioResult position(uint32_t& bytes);
    // Playback: where the server ran out of our data, each time more came after.
    OutputStalls stalls(uint32_t first);
    std::string lastError() const;

  private:
    struct Queued {
        WaveHeader* header;
        uint64_t end;  // playback: stream offset just past its data
    };

    bool makeStream();
    void dropStream();
    void teardown();
    void fail(const std::string& why);
    void setLastError(const std::string& error);
    AudioResult checkUsable() const;

    uint64_t streamTimeBytes();
    int64_t unreportedCycleUsec(const pa_timing_info& info);
    int64_t recentOrigin(int64_t stamp, int64_t usec);
    void forgetOrigins();
    uint64_t heardBytes();
    void feed();
    void returnHeard();
    void receive();
    void store(const uint8_t* data, std::size_t count);
    void returnAll();
    void armTicker();
    pa_usec_t nextTickTime();

    static void onContextState(pa_context* context, void* self);
    static void onStreamState(pa_stream* stream, void* self);
    static void onWritable(pa_stream* stream, std::size_t bytes, void* self);
    static void onReadable(pa_stream* stream, std::size_t bytes, void* self);
    static void onUnderflow(pa_stream* stream, void* self);
    static void onTick(pa_mainloop_api* api, pa_time_event* event, const struct timeval* when,
                       void* self);

    const std::string server_;
    const Direction direction_;
    std::unique_ptr<PulseConnection> connection_;
    std::unique_ptr<DoneDelivery> delivery_;
    pa_stream* stream_ = nullptr;
    pa_time_event* ticker_ = nullptr;
    TickSpacing tickSpacing_;
    bool failed_ = false;
    bool corked_ = false;        // what the owner asked for (pause, stop)
    bool streamCorked_ = false;  // what the server was told

    std::deque<Queued> queued_;
    std::size_t sendIndex_ = 0;
    uint32_t sendOffset_ = 0;
    uint64_t written_ = 0;
    uint64_t sent_ = 0;
    uint64_t heard_ = 0;
    uint64_t captured_ = 0;

    // After the server ran out of our data, what it still had plays out in
    // real time; its stream time stops short of that by the sink latency.
    bool underflowed_ = false;
    pa_usec_t underflowAt_ = 0;
    uint64_t heardAtUnderflow_ = 0;
    uint64_t sentAtUnderflow_ = 0;
    // An underflow becomes a stall once data after it is sent.
    bool stallPending_ = false;
    uint64_t stallAt_ = 0;
    StallRecord stallRecord_;

    // Local times (µs) at which recent timing reports put the stream's 0.
    std::deque<int64_t> origins_;
    int64_t lastReport_ = 0;
    CycleOrigin cycleOrigin_;

    // PipeWire moves a stream's data once per graph cycle and reports the
    // index of the last cycle with the time of the answer (see CycleOrigin).
    // It also hands a playback stream's data to its sink one cycle before
    // the sink sounds it, and leaves that cycle out of the reports: it is
    // learnt from the steps of the read index.
    bool cyclePaced_ = false;
    int64_t lastReadIndex_ = 0;
    std::deque<int64_t> cycleSteps_;

    mutable std::mutex errorMutex_;
    std::string lastError_;
};

}  // namespace tunebox
