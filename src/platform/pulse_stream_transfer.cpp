// The data of a PulseAudio stream: queued headers sent to the server as it
// asks for them and handed back once heard; input stored into the queued
// headers and handed back once full.

#include <algorithm>

#include "platform/pulse_stream.h"
#include "platform/pulse_stream_units.h"

namespace tunebox {

void PulseStream::feed() {
    std::size_t writable = pa_stream_writable_size(stream_);
    if (writable == std::size_t(-1)) {
        return;
    }
    while (sendIndex_ < queued_.size()) {
        const WaveHeader& header = *queued_[sendIndex_].header;
        const uint32_t length = wholeFrames(header.bufferLength);
        if (sendOffset_ >= length) {
            ++sendIndex_;
            sendOffset_ = 0;
            continue;
        }
        const auto count = static_cast<uint32_t>(wholeFrames(
            static_cast<uint32_t>(std::min<std::size_t>(writable, length - sendOffset_))));
        if (count == 0) {
            break;
        }
        if (pa_stream_write(stream_, header.data + sendOffset_, count, nullptr, 0,
                            PA_SEEK_RELATIVE) < 0) {
            fail("the sound server refused data");
            return;
        }
        sendOffset_ += count;
        sent_ += count;
        writable -= count;
    }
    if (stallPending_ && sent_ > stallAt_) {
        stallPending_ = false;
        stallRecord_.note(static_cast<uint32_t>(stallAt_));
    }
    if (streamCorked_ && !corked_ && sent_ > 0) {
        streamCorked_ = false;
        if (pa_operation* operation = pa_stream_cork(stream_, 0, nullptr, nullptr)) {
            pa_operation_unref(operation);
        }
    }
}

void PulseStream::returnHeard() {
    const uint64_t heard = heardBytes();
    while (sendIndex_ > 0 && queued_.front().end <= heard) {
        delivery_->deliver(*queued_.front().header);
        queued_.pop_front();
        --sendIndex_;
    }
}

void PulseStream::receive() {
    while (pa_stream_readable_size(stream_) > 0) {
        const void* data = nullptr;
        std::size_t count = 0;
        if (pa_stream_peek(stream_, &data, &count) < 0) {
            fail("the sound server stopped delivering input");
            return;
        }
        if (count == 0) {
            return;
        }
        store(static_cast<const uint8_t*>(data), count);
        pa_stream_drop(stream_);
    }
}

// A hole in the input (data null) is silence; input with no buffer queued
// is lost, as at a converter nobody reads.
void PulseStream::store(const uint8_t* data, std::size_t count) {
    std::size_t offset = 0;
    while (offset < count && !queued_.empty()) {
        WaveHeader& header = *queued_.front().header;
        const std::size_t room = header.bufferLength - header.bytesRecorded;
        const std::size_t take = std::min(room, count - offset);
        uint8_t* target = header.data + header.bytesRecorded;
        if (data != nullptr) {
            std::copy_n(data + offset, take, target);
        } else {
            std::fill_n(target, take, uint8_t{0});
        }
        header.bytesRecorded += static_cast<uint32_t>(take);
        offset += take;
        if (header.bytesRecorded >= header.bufferLength) {
            delivery_->deliver(header);
            queued_.pop_front();
        }
    }
}

void PulseStream::returnAll() {
    for (const Queued& entry : queued_) {
        delivery_->deliver(*entry.header);
    }
    queued_.clear();
    sendIndex_ = 0;
    sendOffset_ = 0;
}

}  // namespace tunebox
