#pragma once
// Test helpers for driving an audio device: owned buffers with their headers,
// and a done-callback that records the order buffers came back in.

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/audio_device.h"

namespace tunebox::test {

struct BufferSet {
    BufferSet(std::size_t count, uint32_t bytes) : data(count, std::vector<uint8_t>(bytes)) {
        headers.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            headers[i].data = data[i].data();
            headers[i].bufferLength = bytes;
        }
    }
    // Copies `samples` (interleaved stereo) across the buffers in order.
    void fill(const std::vector<int16_t>& samples) {
        std::size_t offset = 0;
        const auto* bytes = reinterpret_cast<const uint8_t*>(samples.data());
        const std::size_t total = samples.size() * 2;
        for (auto& buffer : data) {
            const std::size_t count = std::min(buffer.size(), total - std::min(total, offset));
            std::memcpy(buffer.data(), bytes + offset, count);
            offset += count;
        }
    }
    // Every buffer's samples, in order.
    std::vector<int16_t> samples() const {
        std::vector<int16_t> all;
        for (const auto& buffer : data) {
            const auto* begin = reinterpret_cast<const int16_t*>(buffer.data());
            all.insert(all.end(), begin, begin + buffer.size() / 2);
        }
        return all;
    }
    std::vector<std::vector<uint8_t>> data;
    std::vector<WaveHeader> headers;
};

class DoneLog {
  public:
    DeviceDoneCallback callback() {
        return [this](WaveHeader& header) {
            std::lock_guard lock(mutex_);
            done_.push_back(&header);
            changed_.notify_all();
        };
    }
    // True when `count` buffers came back within `timeout` of real time.
    bool waitFor(std::size_t count, std::chrono::milliseconds timeout = std::chrono::seconds(20)) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, timeout, [&] { return done_.size() >= count; });
    }
    std::vector<WaveHeader*> done() {
        std::lock_guard lock(mutex_);
        return done_;
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<WaveHeader*> done_;
};

// Prepares and queues every header; true when the device took them all.
template <class Device, class Queue>
bool queueAll(Device& device, BufferSet& buffers, Queue queue) {
    for (WaveHeader& header : buffers.headers) {
        if (device.prepare(header) != kAudioOk || (device.*queue)(header) != kAudioOk) {
            return false;
        }
    }
    return true;
}

}  // namespace tunebox::test
