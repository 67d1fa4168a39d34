// A long run at real time with both devices open, engine-style: three
// buffers each way, refilled and requeued as they come back. Disabled in the
// default run; scripts/device-soak.sh runs it (60 s unless
// TUNEBOX_SOAK_SECONDS says otherwise).
#include <gtest/gtest.h>

#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <iostream>
#include <mutex>
#include <thread>

#include "platform/pulse_audio.h"
#include "support/device_buffers.h"

namespace tunebox {
namespace {

using test::BufferSet;

// Buffers handed back by a device, taken by the test's worker thread (the
// callback itself must not call the device).
class ReturnQueue {
  public:
    DeviceDoneCallback callback() {
        return [this](WaveHeader& header) {
            std::lock_guard lock(mutex_);
            returned_.push_back(&header);
            changed_.notify_all();
        };
    }
    WaveHeader* take() {
        std::unique_lock lock(mutex_);
        if (!changed_.wait_for(lock, std::chrono::seconds(5), [&] { return !returned_.empty(); })) {
            return nullptr;
        }
        WaveHeader* header = returned_.front();
        returned_.pop_front();
        return header;
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<WaveHeader*> returned_;
};

// The left channel counts frames; the right stays silent.
void writeCounter(WaveHeader& header, uint16_t& counter) {
    auto* samples = reinterpret_cast<uint16_t*>(header.data);
    for (uint32_t frame = 0; frame < header.bufferLength / 4; ++frame) {
        samples[2 * frame] = counter++;
        samples[2 * frame + 1] = 0;
    }
}

TEST(DeviceSoak, DISABLED_NoBufferIsLostOrReorderedAtRealTime) {
    const char* secondsText = std::getenv("TUNEBOX_SOAK_SECONDS");
    const int seconds = secondsText ? std::atoi(secondsText) : 60;
    PulseAudio audio;
    ASSERT_GT(audio.outputDeviceCount(), 0u) << "no sound server reachable";
    auto output = audio.makeOutput();
    auto input = audio.makeInput();
    ReturnQueue played, captured;
    BufferSet outputBuffers(3, kEngineBlockBytes);
    BufferSet inputBuffers(3, kEngineBlockBytes);
    ASSERT_EQ(input->open(kNativeFormat, captured.callback()), kAudioOk) << input->lastError();
    ASSERT_EQ(output->open(kNativeFormat, played.callback()), kAudioOk) << output->lastError();
    ASSERT_TRUE(test::queueAll(*input, inputBuffers, &InputDevice::addBuffer));
    ASSERT_EQ(input->start(), kAudioOk);
    uint16_t counter = 1;
    for (WaveHeader& header : outputBuffers.headers) {
        writeCounter(header, counter);
        ASSERT_EQ(output->prepare(header), kAudioOk);
        ASSERT_EQ(output->write(header), kAudioOk);
    }

    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    std::size_t nextOutput = 0;
    std::jthread refill([&] {
        while (std::chrono::steady_clock::now() < end) {
            WaveHeader* header = played.take();
            ASSERT_EQ(header, &outputBuffers.headers[nextOutput])
                << "output came back out of order";
            nextOutput = (nextOutput + 1) % 3;
            writeCounter(*header, counter);
            ASSERT_EQ(output->write(*header), kAudioOk);
        }
    });

    // The captured left channel must count on without a gap once the first
    // played frame arrives.
    std::size_t nextInput = 0;
    uint16_t expected = 0;
    uint64_t checkedFrames = 0;
    bool counting = false;
    while (std::chrono::steady_clock::now() < end) {
        WaveHeader* header = captured.take();
        ASSERT_NE(header, nullptr) << "input stopped returning buffers";
        ASSERT_EQ(header, &inputBuffers.headers[nextInput]) << "input came back out of order";
        ASSERT_EQ(header->bytesRecorded, header->bufferLength);
        nextInput = (nextInput + 1) % 3;
        const auto* samples = reinterpret_cast<const uint16_t*>(header->data);
        for (uint32_t frame = 0; frame < header->bytesRecorded / 4; ++frame) {
            const uint16_t value = samples[2 * frame];
            if (!counting && value != 0) {
                counting = true;
                expected = value;
            }
            if (counting) {
                ASSERT_EQ(value, expected) << "captured stream broke after " << checkedFrames;
                ++expected;
                ++checkedFrames;
            }
        }
        ASSERT_EQ(input->addBuffer(*header), kAudioOk);
    }
    refill.join();
    std::cout << "[ soak ] " << seconds << " s, " << checkedFrames
              << " frames captured in order without a gap\n";
    EXPECT_GT(checkedFrames, uint64_t(seconds - 2) * 44100);
    output->reset();
    input->reset();
    EXPECT_EQ(output->close(), kAudioOk);
    EXPECT_EQ(input->close(), kAudioOk);
}

}  // namespace
}  // namespace tunebox
