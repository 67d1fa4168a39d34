#pragma once
// A simulated output as the simulation thread steps it: its queue of
// headers, the frames on their way through its latency, and how much has
// been heard.

#include <algorithm>
#include <cstdint>
#include <deque>
#include <vector>

#include "platform/device_buffers.h"
#include "platform/output_stalls.h"
#include "platform/virtual_air.h"
#include "platform/virtual_audio.h"

namespace tunebox {

// Guarded by the world's mutex.
class VirtualOutputState {
  public:
    VirtualOutputState(uint32_t latencyBytes, std::vector<VirtualStall> stalls,
                       DeviceDoneCallback onDone)
        : pipeline_(latencyBytes / kVirtualFrameBytes),
          stalls_(std::move(stalls)),
          delivery_(std::move(onDone)) {}

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
    OutputStalls stalls(uint32_t first) const { return record_.since(first); }

    void reset() {
        for (const Queued& entry : queued_) {
            delivery_.deliver(*entry.header);
        }
        queued_.clear();
        written_ = taken_ = heard_ = 0;
        takeIndex_ = takeOffset_ = 0;
        dry_ = false;
        record_.clear();
        std::fill(pipeline_.begin(), pipeline_.end(), AirFrame{});
    }

    // One frame of time: returns what reaches the air.
    AirFrame step(bool hangs) {
        if (paused_ || standsStill()) {
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
        noteDryness(count);
        return {sampleAt(bytes), sampleAt(bytes + 2), count};
    }

    // An injected stall: the whole device, converter included, stands for
    // its frames once the position reaches it.
    bool standsStill() {
        if (nextStall_ >= stalls_.size() || heard_ < stalls_[nextStall_].atBytes) {
            return false;
        }
        const VirtualStall& stall = stalls_[nextStall_];
        if (stallLeft_ == 0) {
            stallLeft_ = stall.frames;
            if (stall.reported && stall.frames > 0) {
                record_.note(static_cast<uint32_t>(heard_));
            }
        }
        if (stallLeft_ == 0) {
            ++nextStall_;
            return false;
        }
        if (--stallLeft_ == 0) {
            ++nextStall_;
        }
        return true;
    }

    // Running dry is a stall once sound comes again: what was taken before
    // is heard, then nothing until the next buffer. The end of the sound is none.
    void noteDryness(uint32_t count) {
        if (count == 0 && taken_ > 0) {
            dry_ = true;
        } else if (count > 0 && dry_) {
            dry_ = false;
            record_.note(static_cast<uint32_t>(taken_ - count));
        }
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
    std::vector<VirtualStall> stalls_;
    std::size_t nextStall_ = 0;
    uint32_t stallLeft_ = 0;
    bool dry_ = false;
    StallRecord record_;
    DoneDelivery delivery_;
};

}  // namespace tunebox
