#include "platform/device_buffers.h"

#include <atomic>

namespace tunebox {
namespace {

// Flags are read by the owner while the device's thread marks a buffer done.
std::atomic_ref<uint32_t> flagsOf(WaveHeader& header) {
    return std::atomic_ref(header.flags);
}

}  // namespace

AudioResult prepareHeader(WaveHeader& header) {
    if (header.data == nullptr && header.bufferLength != 0) {
        return kAudioError;
    }
    flagsOf(header).fetch_or(kWaveHeaderPrepared);
    return kAudioOk;
}

AudioResult unprepareHeader(WaveHeader& header) {
    if (isHeaderQueued(header)) {
        return kAudioStillPlaying;
    }
    flagsOf(header).fetch_and(~kWaveHeaderPrepared);
    return kAudioOk;
}

AudioResult enqueueHeader(WaveHeader& header) {
    auto flags = flagsOf(header);
    if ((flags.load() & kWaveHeaderPrepared) == 0) {
        return kAudioUnprepared;
    }
    if ((flags.load() & kWaveHeaderInQueue) != 0) {
        return kAudioStillPlaying;
    }
    flags.fetch_and(~kWaveHeaderDone);
    flags.fetch_or(kWaveHeaderInQueue);
    return kAudioOk;
}

bool isHeaderQueued(const WaveHeader& header) {
    return (std::atomic_ref(const_cast<uint32_t&>(header.flags)).load() & kWaveHeaderInQueue) != 0;
}

DoneDelivery::DoneDelivery(DeviceDoneCallback onDone)
    : onDone_(std::move(onDone)), thread_([this] { run(); }) {}

DoneDelivery::~DoneDelivery() {
    {
        std::lock_guard lock(mutex_);
        ending_ = true;
    }
    wake_.notify_all();
    thread_.join();
}

void DoneDelivery::deliver(WaveHeader& header) {
    {
        std::lock_guard lock(mutex_);
        pending_.push_back(&header);
    }
    wake_.notify_all();
}

void DoneDelivery::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return ending_ || !pending_.empty(); });
        if (pending_.empty()) {
            return;
        }
        WaveHeader& header = *pending_.front();
        pending_.pop_front();
        lock.unlock();
        // Done is visible before the owner hears of it, as the owner's
        // unprepare loop expects.
        auto flags = flagsOf(header);
        flags.fetch_or(kWaveHeaderDone);
        flags.fetch_and(~kWaveHeaderInQueue);
        if (onDone_) {
            onDone_(header);
        }
        lock.lock();
    }
}

}  // namespace tunebox
