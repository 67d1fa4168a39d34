#include "platform/pulse_stream.h"

#include <pulse/rtclock.h>

#include <algorithm>

#include "platform/pulse_stream_units.h"

namespace tunebox {
namespace {

// Enough queued at the server to ride out a busy machine; positions do not
// depend on it.
constexpr pa_usec_t kPlaybackLatency = 200 * PA_USEC_PER_MSEC;
constexpr pa_usec_t kRecordFragment = 10 * PA_USEC_PER_MSEC;
constexpr std::chrono::milliseconds kOperationTimeout{2000};

// The flags whose timing the delay measurement was proven with.
constexpr pa_stream_flags_t kTimingFlags = static_cast<pa_stream_flags_t>(
    PA_STREAM_INTERPOLATE_TIMING | PA_STREAM_AUTO_TIMING_UPDATE | PA_STREAM_ADJUST_LATENCY);

}  // namespace

PulseStream::PulseStream(std::string server, Direction direction)
    : server_(std::move(server)), direction_(direction) {}

PulseStream::~PulseStream() {
    if (connection_) {
        reset();
        teardown();
    }
}

AudioResult PulseStream::open(const WaveFormat& format, DeviceDoneCallback onDone) {
    if (connection_) {
        return kAudioError;
    }
    if (!sameFormat(format, kNativeFormat)) {
        setLastError(std::string(audioResultText(kAudioBadFormat)));
        return kAudioBadFormat;
    }
    connection_ = std::make_unique<PulseConnection>();
    if (!connection_->connect(server_, "Tunebox")) {
        setLastError(connection_->error());
        connection_.reset();
        return kAudioNoDriver;
    }
    delivery_ = std::make_unique<DoneDelivery>(std::move(onDone));
    failed_ = false;
    cyclePaced_ = connection_->servedByPipeWire();
    corked_ = direction_ == Direction::record;
    bool made = false;
    {
        PulseConnection::Lock lock(*connection_);
        pa_context_set_state_callback(connection_->context(), onContextState, this);
        made = makeStream();
        if (made) {
            armTicker();
        }
    }
    if (!made) {
        teardown();
        return kAudioNoDriver;
    }
    return kAudioOk;
}

bool PulseStream::makeStream() {
    const pa_sample_spec spec{PA_SAMPLE_S16LE, kPulseRate, 2};
    const bool playback = direction_ == Direction::playback;
    stream_ = pa_stream_new(connection_->context(),
                            playback ? "Tunebox playback" : "Tunebox capture", &spec, nullptr);
    if (stream_ == nullptr) {
        setLastError(connection_->describe("cannot create a sound stream"));
        return false;
    }
    pa_stream_set_state_callback(stream_, onStreamState, this);
    pa_buffer_attr attributes{};
    attributes.maxlength = uint32_t(-1);
    attributes.minreq = uint32_t(-1);
    attributes.fragsize = uint32_t(-1);
    attributes.tlength = uint32_t(-1);
    attributes.prebuf = uint32_t(-1);
    // Both start corked: a record stream until start, a playback stream
    // until its first data, so that no clock runs before anything sounds.
    const auto flags = static_cast<pa_stream_flags_t>(kTimingFlags | PA_STREAM_START_CORKED);
    streamCorked_ = true;
    int connected = 0;
    if (playback) {
        pa_stream_set_write_callback(stream_, onWritable, this);
        pa_stream_set_underflow_callback(stream_, onUnderflow, this);
        attributes.tlength = uint32_t(pa_usec_to_bytes(kPlaybackLatency, &spec));
        // Play from the first frame and pause on starvation rather than wait
        // for a fill level a last short buffer may never reach.
        attributes.prebuf = kPulseFrameBytes;
        connected =
            pa_stream_connect_playback(stream_, nullptr, &attributes, flags, nullptr, nullptr);
    } else {
        pa_stream_set_read_callback(stream_, onReadable, this);
        attributes.fragsize = uint32_t(pa_usec_to_bytes(kRecordFragment, &spec));
        connected = pa_stream_connect_record(stream_, nullptr, &attributes, flags);
    }
    const bool ready = connected == 0 &&
                       connection_->waitUntil(
                           [this] {
                               const auto state = pa_stream_get_state(stream_);
                               return state == PA_STREAM_READY || !PA_STREAM_IS_GOOD(state);
                           },
                           kPulseTimeout) &&
                       pa_stream_get_state(stream_) == PA_STREAM_READY;
    if (!ready) {
        setLastError(connection_->describe("cannot open a sound stream"));
        dropStream();
    }
    return ready;
}

void PulseStream::dropStream() {
    if (stream_ == nullptr) {
        return;
    }
    pa_stream_set_state_callback(stream_, nullptr, nullptr);
    pa_stream_set_write_callback(stream_, nullptr, nullptr);
    pa_stream_set_read_callback(stream_, nullptr, nullptr);
    pa_stream_set_underflow_callback(stream_, nullptr, nullptr);
    pa_stream_disconnect(stream_);
    pa_stream_unref(stream_);
    stream_ = nullptr;
}

void PulseStream::teardown() {
    {
        PulseConnection::Lock lock(*connection_);
        if (ticker_ != nullptr) {
            pa_threaded_mainloop_get_api(connection_->loop())->time_free(ticker_);
            ticker_ = nullptr;
        }
        dropStream();
        pa_context_set_state_callback(connection_->context(), nullptr, nullptr);
    }
    connection_.reset();
    delivery_.reset();  // hands back what is still pending, then ends
}

void PulseStream::setLastError(const std::string& error) {
    std::lock_guard lock(errorMutex_);
    lastError_ = error;
}

std::string PulseStream::lastError() const {
    std::lock_guard lock(errorMutex_);
    return lastError_;
}

void PulseStream::fail(const std::string& why) {
    if (failed_) {
        return;
    }
    failed_ = true;
    setLastError(connection_->describe(why));
    returnAll();
}

AudioResult PulseStream::checkUsable() const {
    if (!connection_) {
        return kAudioBadDevice;
    }
    return failed_ ? kAudioError : kAudioOk;
}

AudioResult PulseStream::queue(WaveHeader& header) {
    if (!connection_) {
        return kAudioBadDevice;
    }
    PulseConnection::Lock lock(*connection_);
    if (failed_) {
        return kAudioError;
    }
    const AudioResult result = enqueueHeader(header);
    if (result != kAudioOk) {
        return result;
    }
    if (direction_ == Direction::playback) {
        written_ += wholeFrames(header.bufferLength);
        queued_.push_back({&header, written_});
        feed();
    } else {
        header.bytesRecorded = 0;
        queued_.push_back({&header, 0});
    }
    return kAudioOk;
}

AudioResult PulseStream::setCorked(bool corked) {
    if (const AudioResult usable = checkUsable(); usable != kAudioOk) {
        return usable;
    }
    PulseConnection::Lock lock(*connection_);
    if (failed_) {
        return kAudioError;
    }
    corked_ = corked;
    if (direction_ == Direction::playback && sent_ == 0) {
        return kAudioOk;  // the stream stays corked until data arrives
    }
    streamCorked_ = corked;
    if (!connection_->finish(pa_stream_cork(stream_, corked, nullptr, nullptr),
                             kOperationTimeout)) {
        fail(corked ? "the sound server did not pause" : "the sound server did not resume");
        return kAudioError;
    }
    return kAudioOk;
}

AudioResult PulseStream::stopRecording() {
    if (const AudioResult result = setCorked(true); result != kAudioOk) {
        return result;
    }
    PulseConnection::Lock lock(*connection_);
    // What the server sent before the cork is captured sound: it goes into
    // the buffers before the one being filled is handed back.
    receive();
    if (!queued_.empty() && queued_.front().header->bytesRecorded > 0) {
        delivery_->deliver(*queued_.front().header);
        queued_.pop_front();
    }
    return kAudioOk;
}

AudioResult PulseStream::reset() {
    if (!connection_) {
        return kAudioBadDevice;
    }
    PulseConnection::Lock lock(*connection_);
    returnAll();
    if (failed_) {
        return kAudioOk;
    }
    // A fresh stream starts its clock at 0 with nothing queued, which is
    // exactly what a reset promises.
    dropStream();
    forgetOrigins();
    cycleSteps_.clear();
    lastReadIndex_ = 0;
    written_ = sent_ = heard_ = captured_ = 0;
    underflowed_ = stallPending_ = false;
    stallRecord_.clear();
    if (direction_ == Direction::record) {
        corked_ = true;
    }
    if (!makeStream()) {
        fail("the sound stream could not be reopened");
        return kAudioError;
    }
    return kAudioOk;
}

AudioResult PulseStream::close() {
    if (!connection_) {
        return kAudioBadDevice;
    }
    {
        PulseConnection::Lock lock(*connection_);
        if (!queued_.empty()) {
            return kAudioStillPlaying;
        }
    }
    teardown();
    return kAudioOk;
}

OutputStalls PulseStream::stalls(uint32_t first) {
    if (!connection_) {
        return {};
    }
    PulseConnection::Lock lock(*connection_);
    return stallRecord_.since(first);
}

void PulseStream::armTicker() {
    ticker_ = pa_context_rttime_new(connection_->context(), nextTickTime(), onTick, this);
}

pa_usec_t PulseStream::nextTickTime() {
    return pa_rtclock_now() + pa_usec_t(tickSpacing_.next());
}

void PulseStream::onContextState(pa_context* context, void* self) {
    auto& stream = *static_cast<PulseStream*>(self);
    stream.connection_->signal();
    if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(context))) {
        stream.fail("the sound server went away");
    }
}

void PulseStream::onStreamState(pa_stream* pulseStream, void* self) {
    auto& stream = *static_cast<PulseStream*>(self);
    stream.connection_->signal();
    if (!PA_STREAM_IS_GOOD(pa_stream_get_state(pulseStream))) {
        stream.fail("the sound stream failed");
    }
}

void PulseStream::onWritable(pa_stream*, std::size_t, void* self) {
    static_cast<PulseStream*>(self)->feed();
}

void PulseStream::onReadable(pa_stream*, std::size_t, void* self) {
    static_cast<PulseStream*>(self)->receive();
}

void PulseStream::onUnderflow(pa_stream*, void* self) {
    auto& stream = *static_cast<PulseStream*>(self);
    stream.underflowed_ = true;
    stream.underflowAt_ = pa_rtclock_now();
    stream.heardAtUnderflow_ = std::max(stream.heard_, stream.streamTimeBytes());
    stream.sentAtUnderflow_ = stream.sent_;
    // The server names the byte it ran out at; data sent since the report
    // was made must not move the stall.
    const int64_t index = pa_stream_get_underflow_index(stream.stream_);
    stream.stallAt_ = index >= 0 ? uint64_t(index) : stream.sent_;
    stream.stallPending_ = true;
}

void PulseStream::onTick(pa_mainloop_api*, pa_time_event* event, const struct timeval*,
                         void* self) {
    auto& stream = *static_cast<PulseStream*>(self);
    if (!stream.failed_ && stream.direction_ == Direction::playback && stream.stream_) {
        stream.returnHeard();
    }
    // Reports more often than the graph's cycles and out of step with them,
    // so that some come just after a cycle and some one cycle apart.
    if (!stream.failed_ && stream.cyclePaced_ && stream.stream_ && !stream.streamCorked_) {
        if (pa_operation* update = pa_stream_update_timing_info(stream.stream_, nullptr, nullptr)) {
            pa_operation_unref(update);
        }
        if (stream.direction_ == Direction::record) {
            stream.captured_ = std::max(stream.captured_, stream.streamTimeBytes());
        }
    }
    pa_context_rttime_restart(stream.connection_->context(), event, stream.nextTickTime());
}

}  // namespace tunebox
