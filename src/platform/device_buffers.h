#pragma once
// What both device backends share about queued headers: the flag rules of
// prepare, queue and unprepare, and the thread that hands finished buffers
// back to the owner.

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "platform/audio_device.h"

namespace tunebox {

AudioResult prepareHeader(WaveHeader& header);
AudioResult unprepareHeader(WaveHeader& header);
// Checks that the header may be queued and marks it queued.
AudioResult enqueueHeader(WaveHeader& header);
bool isHeaderQueued(const WaveHeader& header);

// The device's own thread for done-callbacks: the device hands a header over
// as soon as it has finished with it and never waits for the owner's callback.
class DoneDelivery {
  public:
    explicit DoneDelivery(DeviceDoneCallback onDone);
    // Delivers what is still pending, then ends the thread.
    ~DoneDelivery();
    DoneDelivery(const DoneDelivery&) = delete;
    DoneDelivery& operator=(const DoneDelivery&) = delete;

    void deliver(WaveHeader& header);

  private:
    void run();

    DeviceDoneCallback onDone_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<WaveHeader*> pending_;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace tunebox
