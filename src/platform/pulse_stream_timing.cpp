// Where a PulseAudio stream's converter stands, from the server's timing
// reports and, after an underflow, the local clock.

#include <pulse/rtclock.h>

#include <algorithm>
#include <vector>

#include "platform/pulse_stream.h"
#include "platform/pulse_stream_units.h"

namespace tunebox {
namespace {

constexpr std::size_t kReportsKept = 5;
constexpr std::size_t kCycleStepsKept = 16;
// Fewer steps than this may all be several cycles long.
constexpr std::size_t kCycleStepsNeeded = 3;

}  // namespace

AudioResult PulseStream::position(uint32_t& bytes) {
    if (!connection_) {
        return kAudioBadDevice;
    }
    PulseConnection::Lock lock(*connection_);
    if (!failed_) {
        if (direction_ == Direction::playback) {
            heardBytes();
        } else {
            captured_ = std::max(captured_, streamTimeBytes());
        }
    }
    bytes = static_cast<uint32_t>(direction_ == Direction::playback ? heard_ : captured_);
    return failed_ ? kAudioError : kAudioOk;
}

// Where the converter is, from the server's timing reports: the read index
// less the sink latency for playback; the write index plus the source
// latency for capture, less the sink latency when the source is a monitor,
// as the server reports it. A running stream's report fixes the local time at
// which the stream's clock stood at 0; carried forward on the local clock, it
// gives the position now. Single reports were measured off by up to 5 ms
// (the library's smoothed stream time lagged by up to 0.5 ms), so the median
// origin of the last few reports is used.
uint64_t PulseStream::streamTimeBytes() {
    const pa_timing_info* info = stream_ ? pa_stream_get_timing_info(stream_) : nullptr;
    if (info == nullptr) {
        return 0;
    }
    const bool playback = direction_ == Direction::playback;
    const int64_t index = std::max<int64_t>(playback ? info->read_index : info->write_index, 0);
    auto usec = int64_t(pa_bytes_to_usec(uint64_t(index), pa_stream_get_sample_spec(stream_)));
    if (streamCorked_) {
        forgetOrigins();
        return bytesOfTime(pa_usec_t(usec));
    }
    usec += (playback ? 0 : int64_t(info->source_usec)) - int64_t(info->sink_usec);
    const int64_t unheard = playback && cyclePaced_ ? unreportedCycleUsec(*info) : 0;
    if (playback && !info->playing) {
        forgetOrigins();  // starved or not yet started: the clock stands
        usec -= unheard;
        return usec > 0 ? bytesOfTime(pa_usec_t(usec)) : 0;
    }
    const int64_t origin = recentOrigin(int64_t(pa_timeval_load(&info->timestamp)), usec);
    struct timeval now;
    pa_gettimeofday(&now);
    usec = int64_t(pa_timeval_load(&now)) - origin - unheard;
    return usec > 0 ? bytesOfTime(pa_usec_t(usec)) : 0;
}

// The origin of the recent reports: their median on PulseAudio; on
// PipeWire, where a report is late by where in the cycle it was answered,
// the bounds the reports set on it (see CycleOrigin).
int64_t PulseStream::recentOrigin(int64_t stamp, int64_t usec) {
    const bool fresh = stamp != lastReport_;
    lastReport_ = stamp;
    if (cyclePaced_) {
        if (fresh) {
            cycleOrigin_.add(stamp, usec);
        }
        return cycleOrigin_.origin();
    }
    if (fresh) {
        origins_.push_back(stamp - usec);
        if (origins_.size() > kReportsKept) {
            origins_.pop_front();
        }
    }
    std::vector<int64_t> sorted(origins_.begin(), origins_.end());
    std::nth_element(sorted.begin(), sorted.begin() + sorted.size() / 2, sorted.end());
    return sorted[sorted.size() / 2];
}

// The shortest recent step of the read index between two reports: one
// cycle, as reports come more often than cycles (see onTick). 0 until enough
// steps were seen.
int64_t PulseStream::unreportedCycleUsec(const pa_timing_info& info) {
    // The first step, from the start, may be part of a cycle.
    if (lastReadIndex_ > 0 && info.read_index > lastReadIndex_) {
        cycleSteps_.push_back(info.read_index - lastReadIndex_);
        if (cycleSteps_.size() > kCycleStepsKept) {
            cycleSteps_.pop_front();
        }
    }
    lastReadIndex_ = std::max(lastReadIndex_, info.read_index);
    if (cycleSteps_.size() < kCycleStepsNeeded) {
        return 0;
    }
    // Steps are whole cycles, and so are the differences between them: a
    // step of three cycles beside one of two gives the cycle even while no
    // report has come one cycle after another. A resampled stream's cycles
    // differ by a frame; such differences are no cycle.
    int64_t cycle = *std::min_element(cycleSteps_.begin(), cycleSteps_.end());
    for (const int64_t a : cycleSteps_) {
        for (const int64_t b : cycleSteps_) {
            if (a - b > cycle / 4) {
                cycle = std::min(cycle, a - b);
            }
        }
    }
    return int64_t(pa_bytes_to_usec(uint64_t(cycle), pa_stream_get_sample_spec(stream_)));
}

void PulseStream::forgetOrigins() {
    origins_.clear();
    cycleOrigin_.clear();
}

uint64_t PulseStream::heardBytes() {
    uint64_t heard = streamTimeBytes();
    if (underflowed_ && sent_ == sentAtUnderflow_ && !corked_) {
        const uint64_t playedOut = heardAtUnderflow_ + bytesOfTime(pa_rtclock_now() - underflowAt_);
        heard = std::max(heard, std::min(sent_, playedOut));
    }
    heard_ = std::max(heard_, std::min(heard, sent_));
    return heard_;
}

}  // namespace tunebox
