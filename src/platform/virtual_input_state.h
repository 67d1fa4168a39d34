#pragma once
// A simulated input as the simulation thread steps it: the headers it fills
// from the air, and the full ones on their way back through its latency.
// Guarded by the world's mutex.

#include <cstdint>
#include <deque>

#include "platform/device_buffers.h"
#include "platform/virtual_air.h"

namespace tunebox {

class VirtualInputState {
  public:
    VirtualInputState(uint32_t latencyBytes, DeviceDoneCallback onDone)
        : latencyFrames_(latencyBytes / kVirtualFrameBytes), delivery_(std::move(onDone)) {}

    AudioResult addBuffer(WaveHeader& header) {
        const AudioResult result = enqueueHeader(header);
        if (result == kAudioOk) {
            header.bytesRecorded = 0;
            queued_.push_back(&header);
        }
        return result;
    }
    void setStarted(bool started, uint64_t frame) {
        if (started_ && !started && !queued_.empty() && queued_.front()->bytesRecorded > 0) {
            finishFront(frame);
        }
        started_ = started;
    }
    bool busy() const { return !queued_.empty() || !returning_.empty(); }
    uint64_t captured() const { return captured_; }

    void reset() {
        started_ = false;
        for (const Returning& entry : returning_) {
            delivery_.deliver(*entry.header);
        }
        returning_.clear();
        for (WaveHeader* header : queued_) {
            delivery_.deliver(*header);
        }
        queued_.clear();
        captured_ = 0;
    }

    void step(const AirFrame& air, uint64_t frame, bool hangs) {
        if (started_) {
            uint8_t bytes[kVirtualFrameBytes] = {
                static_cast<uint8_t>(air.left), static_cast<uint8_t>(air.left >> 8),
                static_cast<uint8_t>(air.right), static_cast<uint8_t>(air.right >> 8)};
            for (uint8_t byte : bytes) {
                store(byte, frame);
            }
            captured_ += kVirtualFrameBytes;
        }
        while (!hangs && !returning_.empty() && returning_.front().due <= frame) {
            delivery_.deliver(*returning_.front().header);
            returning_.pop_front();
        }
    }

  private:
    struct Returning {
        WaveHeader* header;
        uint64_t due;
    };

    // A byte with no buffer to take it is lost, as at a real converter.
    void store(uint8_t byte, uint64_t frame) {
        if (queued_.empty()) {
            return;
        }
        WaveHeader& header = *queued_.front();
        if (header.bytesRecorded < header.bufferLength) {
            header.data[header.bytesRecorded++] = byte;
        }
        if (header.bytesRecorded >= header.bufferLength) {
            finishFront(frame);
        }
    }

    void finishFront(uint64_t frame) {
        returning_.push_back({queued_.front(), frame + latencyFrames_});
        queued_.pop_front();
    }

    const uint64_t latencyFrames_;
    std::deque<WaveHeader*> queued_;
    std::deque<Returning> returning_;
    uint64_t captured_ = 0;
    bool started_ = false;
    DoneDelivery delivery_;
};

}  // namespace tunebox
