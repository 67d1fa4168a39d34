#include "platform/virtual_audio.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "capture/measurement_signal.h"
#include "capture/offset_finder.h"
#include "support/device_buffers.h"

namespace tunebox {
namespace {

using test::BufferSet;
using test::DoneLog;
using test::queueAll;

constexpr uint32_t kBlock = 8820;  // 50 ms

TEST(VirtualAudio, HeadersFollowTheQueueRulesAndResetReturnsEveryOne) {
    VirtualAudio audio({.speed = 50});
    audio.setOutputHangs(true);
    auto output = audio.makeOutput();
    DoneLog log;
    ASSERT_EQ(output->open(kNativeFormat, log.callback()), kAudioOk);
    BufferSet buffers(3, kBlock);
    WaveHeader& first = buffers.headers[0];
    EXPECT_EQ(output->write(first), kAudioUnprepared);
    ASSERT_TRUE(queueAll(*output, buffers, &OutputDevice::write));
    EXPECT_EQ(output->write(first), kAudioStillPlaying);
    EXPECT_EQ(output->unprepare(first), kAudioStillPlaying);
    EXPECT_EQ(output->close(), kAudioStillPlaying);

    ASSERT_EQ(output->reset(), kAudioOk);
    ASSERT_TRUE(log.waitFor(3));
    EXPECT_EQ(log.done(), (std::vector<WaveHeader*>{&buffers.headers[0], &buffers.headers[1],
                                                    &buffers.headers[2]}));
    for (WaveHeader& header : buffers.headers) {
        EXPECT_TRUE(header.flags & kWaveHeaderDone);
        EXPECT_EQ(output->unprepare(header), kAudioOk);
        EXPECT_EQ(header.flags & (kWaveHeaderPrepared | kWaveHeaderInQueue), 0u);
    }
    uint32_t position = 99;
    EXPECT_EQ(output->position(position), kAudioOk);
    EXPECT_EQ(position, 0u);
    EXPECT_EQ(output->close(), kAudioOk);
    EXPECT_EQ(output->position(position), kAudioBadDevice);
}

TEST(VirtualAudio, InjectedOpenFailureAndForeignFormatsAreRefused) {
    VirtualAudio audio({.failInputOpen = true});
    auto input = audio.makeInput();
    EXPECT_EQ(input->open(kNativeFormat, {}), kAudioNoDriver);
    EXPECT_FALSE(input->lastError().empty());
    auto output = audio.makeOutput();
    WaveFormat mono = kNativeFormat;
    mono.channels = 1;
    EXPECT_EQ(output->open(mono, {}), kAudioBadFormat);
    EXPECT_EQ(output->open(kNativeFormat, {}), kAudioOk);
}

TEST(VirtualAudio, AHangingInputKeepsItsBuffersUntilReset) {
    VirtualAudio audio({.speed = 50});
    audio.setInputHangs(true);
    auto input = audio.makeInput();
    DoneLog log;
    ASSERT_EQ(input->open(kNativeFormat, log.callback()), kAudioOk);
    BufferSet buffers(2, 4410);
    ASSERT_TRUE(queueAll(*input, buffers, &InputDevice::addBuffer));
    ASSERT_EQ(input->start(), kAudioOk);
    EXPECT_FALSE(log.waitFor(1, std::chrono::milliseconds(300)));
    uint32_t position = 0;
    input->position(position);
    EXPECT_GT(position, 2u * 4410);  // the converter kept running
    EXPECT_EQ(input->close(), kAudioStillPlaying);
    ASSERT_EQ(input->reset(), kAudioOk);
    ASSERT_TRUE(log.waitFor(2));
    EXPECT_EQ(input->close(), kAudioOk);
}

// The input hears a click track through the output's latency: the offset
// found by cross-correlation and the one the positions give agree to the
// byte, and equal the configured latency plus the gap between the starts.
TEST(VirtualAudio, PositionsGiveTheTrueRoundTripToTheByte) {
    constexpr uint32_t kOutputLatency = 5292;  // 30 ms
    constexpr uint32_t kInputLatency = 10000;
    VirtualAudio audio({.outputLatencyBytes = kOutputLatency,
                        .inputLatencyBytes = kInputLatency,
                        // Slow enough that the positions are read while the
                        // output still plays, even on a busy machine.
                        .speed = 2,
                        .voice = {}});
    auto input = audio.makeInput();
    auto output = audio.makeOutput();
    DoneLog inputDone, outputDone;
    BufferSet captured(20, kBlock);
    BufferSet played(12, kBlock);
    const auto clicks = measurementClicks(12 * kBlock / 4, 2000);
    played.fill(clicks);

    audio.setClockStalled(true);
    ASSERT_EQ(input->open(kNativeFormat, inputDone.callback()), kAudioOk);
    ASSERT_TRUE(queueAll(*input, captured, &InputDevice::addBuffer));
    ASSERT_EQ(input->start(), kAudioOk);
    const uint64_t inputStart = audio.frameNow();
    audio.setClockStalled(false);
    while (audio.frameNow() < inputStart + 2000) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    audio.setClockStalled(true);
    const uint64_t outputStart = audio.frameNow();
    ASSERT_EQ(output->open(kNativeFormat, outputDone.callback()), kAudioOk);
    ASSERT_EQ(output->pause(), kAudioOk);
    ASSERT_TRUE(queueAll(*output, played, &OutputDevice::write));
    ASSERT_EQ(output->restart(), kAudioOk);
    audio.setClockStalled(false);

    // Every input buffer comes back no sooner than its input latency.
    ASSERT_TRUE(inputDone.waitFor(3));
    audio.setClockStalled(true);
    uint32_t inputPosition = 0;
    uint32_t outputPosition = 0;
    input->position(inputPosition);
    output->position(outputPosition);
    audio.setClockStalled(false);
    EXPECT_GE(inputPosition, 3 * kBlock + kInputLatency);
    ASSERT_GT(outputPosition, 0u);
    ASSERT_LT(outputPosition, 12 * kBlock);  // read while playing, as the mixer does
    const int64_t positionDelay = int64_t(inputPosition) - int64_t(outputPosition);
    EXPECT_EQ(positionDelay, int64_t(outputStart - inputStart) * 4 + kOutputLatency);

    ASSERT_TRUE(outputDone.waitFor(12));
    EXPECT_EQ(outputDone.done().front(), &played.headers[0]);
    EXPECT_EQ(outputDone.done().back(), &played.headers[11]);
    output->position(outputPosition);
    EXPECT_EQ(outputPosition, 12 * kBlock);

    ASSERT_TRUE(inputDone.waitFor(20));
    const auto search =
        findOffset(leftChannel(clicks), leftChannel(captured.samples()), -44100, 44100);
    ASSERT_TRUE(search.found) << search.reason;
    EXPECT_EQ(search.offsetFrames * 4, positionDelay);
}

TEST(VirtualAudio, TheVoiceIsSungInTimeWithWhatTheOutputPlays) {
    std::vector<int16_t> voice = measurementClicks(3 * kBlock / 4, 500);
    VirtualAudio audio(
        {.outputLatencyBytes = 400, .speed = 40, .loopbackGain = 0.0f, .voice = voice});
    auto input = audio.makeInput();
    auto output = audio.makeOutput();
    DoneLog inputDone, outputDone;
    BufferSet captured(8, kBlock);
    BufferSet played(3, kBlock);  // silence: only the voice is heard
    ASSERT_EQ(input->open(kNativeFormat, inputDone.callback()), kAudioOk);
    ASSERT_TRUE(queueAll(*input, captured, &InputDevice::addBuffer));
    audio.setClockStalled(true);
    ASSERT_EQ(input->start(), kAudioOk);
    ASSERT_EQ(output->open(kNativeFormat, outputDone.callback()), kAudioOk);
    ASSERT_TRUE(queueAll(*output, played, &OutputDevice::write));
    audio.setClockStalled(false);
    ASSERT_TRUE(inputDone.waitFor(8));
    const auto search = findOffset(leftChannel(voice), leftChannel(captured.samples()), 0, 44100);
    ASSERT_TRUE(search.found) << search.reason;
    EXPECT_EQ(search.offsetFrames, 100);
    EXPECT_GT(search.match, 0.999);
    ASSERT_TRUE(outputDone.waitFor(3));
}

// Running dry between two buffers is a stall where the first one ended, told
// once sound comes again; the end of the sound is none. An injected stall
// is told where it stopped the device, and one it cannot see is not told.
TEST(VirtualAudio, StallsAreToldWhereTheSoundStoppedOnceItGoesOn) {
    VirtualAudio audio({.speed = 50,
                        .outputStalls = {{.atBytes = 4000, .frames = 441},
                                         {.atBytes = 6000, .frames = 441, .reported = false}}});
    auto output = audio.makeOutput();
    DoneLog log;
    ASSERT_EQ(output->open(kNativeFormat, log.callback()), kAudioOk);
    BufferSet first(1, kBlock);
    BufferSet second(1, kBlock);
    ASSERT_TRUE(queueAll(*output, first, &OutputDevice::write));
    ASSERT_TRUE(log.waitFor(1));
    const auto dryFor = [&audio] {
        const uint64_t from = audio.frameNow();
        while (audio.frameNow() < from + 4410) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    };
    dryFor();
    EXPECT_EQ(output->stalls(0).count, 1u);
    EXPECT_EQ(output->stalls(0).position, 4000u);
    ASSERT_TRUE(queueAll(*output, second, &OutputDevice::write));
    ASSERT_TRUE(log.waitFor(2));
    dryFor();
    const OutputStalls stalls = output->stalls(1);
    EXPECT_EQ(stalls.count, 2u);
    EXPECT_EQ(stalls.position, kBlock);
    uint32_t position = 0;
    ASSERT_EQ(output->position(position), kAudioOk);
    EXPECT_EQ(position, 2 * kBlock);
}

}  // namespace
}  // namespace tunebox
