#pragma once
// What the virtual input hears of the players' output. With no latency and
// a loopback gain of 1 the air carries the output's samples exactly, so the
// sound heard, with the silence before and after it cut away, is the byte
// stream the output device was given.

#include <algorithm>
#include <vector>

#include "platform/virtual_audio.h"
#include "support/device_buffers.h"

namespace tunebox::test {

class LoopbackListener {
  public:
    static constexpr uint32_t kBlock = 44100;  // 0.25 s

    LoopbackListener(VirtualAudio& audio, uint32_t seconds)
        : input_(audio.makeInput()), buffers_(seconds * 4, kBlock) {
        ok_ = input_->open(kNativeFormat, done_.callback()) == kAudioOk &&
              queueAll(*input_, buffers_, &InputDevice::addBuffer) && input_->start() == kAudioOk;
    }
    ~LoopbackListener() {
        if (ok_) {
            input_->reset();
            done_.waitFor(buffers_.headers.size());
            for (WaveHeader& header : buffers_.headers) {
                input_->unprepare(header);
            }
            input_->close();
        }
    }
    LoopbackListener(const LoopbackListener&) = delete;
    LoopbackListener& operator=(const LoopbackListener&) = delete;

    bool listening() const { return ok_; }

    // Ends the listening and returns what was heard between the first and
    // the last frame that was not silent.
    std::vector<uint8_t> heard() {
        input_->reset();
        done_.waitFor(buffers_.headers.size());
        std::vector<uint8_t> bytes;
        for (std::size_t i = 0; i < buffers_.headers.size(); ++i) {
            const uint8_t* data = buffers_.data[i].data();
            bytes.insert(bytes.end(), data, data + buffers_.headers[i].bytesRecorded);
        }
        return trimSilence(bytes);
    }

    // Native PCM between its first and its last frame that is not silent.
    static std::vector<uint8_t> trimSilence(const std::vector<uint8_t>& bytes) {
        auto silent = [&](std::size_t frame) {
            return std::all_of(bytes.begin() + frame * 4, bytes.begin() + frame * 4 + 4,
                               [](uint8_t byte) { return byte == 0; });
        };
        std::size_t first = 0;
        std::size_t end = bytes.size() / 4;
        while (first < end && silent(first)) {
            ++first;
        }
        while (end > first && silent(end - 1)) {
            --end;
        }
        return {bytes.begin() + first * 4, bytes.begin() + end * 4};
    }

  private:
    std::unique_ptr<InputDevice> input_;
    BufferSet buffers_;
    DoneLog done_;
    bool ok_ = false;
};

}  // namespace tunebox::test
