#pragma once
// A simulated output as the simulation thread steps it: its queue of
// headers, the frames on their way through its latency, and how much has
// been heard.

#include <algorithm>
#include <cstdint>
#include <deque>
#include <vector>

#include "platform/device_buffers.h"
#include "platform/virtual_air.h"

namespace tunebox {

// Guarded by the world's mutex.
class VirtualOutputState {
  public:
    VirtualOutputState(uint32_t latencyBytes, DeviceDoneCallback onDone)
        : pipeline_(latencyBytes / kVirtualFrameBytes), delivery_(std::move(onDone)) {}

    AudioResult write(WaveHeader& header) {
        const AudioResult result = enqueueHeader(header);
        if (result == kAudioOk) {
            written_ += header.bufferLength;
            queued_.push_back({&header, written_});
        }
        return result;
    }
    void setPaused(bool paused) { paused_ = paused; }
    bool busy() const { return !queued_.empty(); }
    uint64_t heard() const { return heard_; }

    void reset() {
        for (const Queued& entry : queued_) {
            delivery_.deliver(*entry.header);
        }
        queued_.clear();
        written_ = taken_ = heard_ = 0;
        takeIndex_ = takeOffset_ = 0;
        std::fill(pipeline_.begin(), pipeline_.end(), AirFrame{});
    }

    // One frame of time: returns what reaches the air.
    AirFrame step(bool hangs) {
        if (paused_) {
            return {};
        }
        AirFrame out = take();
        if (!pipeline_.empty()) {
            std::swap(out, pipeline_[pipelineAt_]);
            pipelineAt_ = (pipelineAt_ + 1) % pipeline_.size();
        }
        heard_ += out.realBytes;
        if (!hangs) {
            returnHeard();
        }
        return out;
    }

  private:
    struct Queued {
        WaveHeader* header;
        uint64_t end;  // stream offset just past its data
    };

    AirFrame take() {
        uint8_t bytes[kVirtualFrameBytes] = {};
        uint32_t count = 0;
        while (count < kVirtualFrameBytes && takeIndex_ < queued_.size()) {
            const WaveHeader& header = *queued_[takeIndex_].header;
            if (takeOffset_ >= header.bufferLength) {
                ++takeIndex_;
                takeOffset_ = 0;
                continue;
            }
            bytes[count++] = header.data[takeOffset_++];
        }
        taken_ += count;
        return {sampleAt(bytes), sampleAt(bytes + 2), count};
    }

    void returnHeard() {
        while (!queued_.empty() && queued_.front().end <= heard_ && takeIndex_ > 0) {
            delivery_.deliver(*queued_.front().header);
            queued_.pop_front();
            --takeIndex_;
        }
    }

    std::deque<Queued> queued_;
    std::size_t takeIndex_ = 0;
    uint32_t takeOffset_ = 0;
    uint64_t written_ = 0;
    uint64_t taken_ = 0;
    uint64_t heard_ = 0;
    bool paused_ = false;
    std::vector<AirFrame> pipeline_;
    std::size_t pipelineAt_ = 0;
    DoneDelivery delivery_;
};

}  // namespace tunebox
