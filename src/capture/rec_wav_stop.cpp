// How a run of the capture engine ends: STOP (or the owner's answer to a
// fault) takes the buffers back and finishes the take; close hands the
// device back and frees the run.

#include <chrono>
#include <thread>

#include "capture/rec_wav.h"

namespace tunebox {
namespace {

constexpr auto kStopWait = std::chrono::milliseconds(10);
constexpr auto kCloseRetryWait = std::chrono::milliseconds(500);
// A reset hands every buffer straight back; a device that breaks that
// promise cannot hold a stop for longer than this.
constexpr uint32_t kStopGraceMs = 2000;

}  // namespace

// The voice has ended: the mixer hands out what is left of it over the
// accompaniment, and whatever it cannot line up (a take stopped before the
// delay could be applied) has nothing to go with.
void CRecWav::finishTake() {
    if (playback_ != nullptr) {
        syncMx_.endVoice();
        mixQueued();
    }
    close();
}

int CRecWav::stop() {
    std::lock_guard lock(stopLock_);
    if (state_ == kRecCapturing) {
        state_ = kRecStopping;
        pending_ = queued_;
        syncMx_.stopFollowing();
        takeBackBuffers();
        waitForOutstanding();
        // With no buffer left to carry the end flag (a device that failed
        // them all) the take is finished here.
        if (state_ == kRecStopping) {
            finishTake();
        }
    }
    return 1;
}

// The converter stops at this instant and every buffer comes back at once,
// the one being filled with what it holds: the take ends where the stop
// found it, not when the queued buffers would have filled.
void CRecWav::takeBackBuffers() {
    if (device_) {
        device_->stop();
        device_->reset();
    }
}

// Pumps the notices by hand until the last outstanding buffer (the one that
// carries the end flag) has finished the take.
void CRecWav::waitForOutstanding() {
    const auto retryLimit = static_cast<uint32_t>(kStopGraceMs / kStopWait.count());
    stopRetry_ = 0;
    while (pending_ > 0 && state_ == kRecStopping && stopRetry_ < retryLimit) {
        if (dispatcher_.pumpPending() > 0) {
            continue;
        }
        dispatcher_.waitForWork(kStopWait);
        ++stopRetry_;
    }
}

void CRecWav::unprepareAll() {
    for (int32_t i = 0; i < RecBuf.slotCount(); ++i) {
        unprepareReturned(RecBuf.ling[i].whdr);
    }
}

int CRecWav::close() {
    if (state_ == kRecClosed) {
        return 0;
    }
    device_->reset();
    unprepareAll();
    if (device_->close() != kAudioOk) {
        device_->reset();
        std::this_thread::sleep_for(kCloseRetryWait);
        device_->close();
    }
    device_.reset();
    freeAll();
    state_ = kRecClosed;
    return 1;
}

}  // namespace tunebox
