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
        origins_.clear();
        return bytesOfTime(pa_usec_t(usec));
    }
    usec += (playback ? 0 : int64_t(info->source_usec)) - int64_t(info->sink_usec);
    if (playback && !info->playing) {
        origins_.clear();  // starved or not yet started: the clock stands
        return usec > 0 ? bytesOfTime(pa_usec_t(usec)) : 0;
    }
    const auto stamp = int64_t(pa_timeval_load(&info->timestamp));
    if (stamp != lastReport_) {
        lastReport_ = stamp;
        origins_.push_back(stamp - usec);
        if (origins_.size() > kReportsKept) {
            origins_.pop_front();
        }
    }
    std::vector<int64_t> sorted(origins_.begin(), origins_.end());
    std::nth_element(sorted.begin(), sorted.begin() + sorted.size() / 2, sorted.end());
    struct timeval now;
    pa_gettimeofday(&now);
    usec = int64_t(pa_timeval_load(&now)) - sorted[sorted.size() / 2];
    return usec > 0 ? bytesOfTime(pa_usec_t(usec)) : 0;
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
