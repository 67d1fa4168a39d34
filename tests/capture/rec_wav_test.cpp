// The capture engine through the virtual devices, whose positions and
// latencies are exact.
#include "capture/rec_wav.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "platform/queue_dispatcher.h"
#include "platform/virtual_audio.h"
#include "playback/mixing_wave_ctl.h"
#include "playback/wav_length.h"
#include "session/synthetic_voice.h"
#include "support/device_buffers.h"
#include "support/log_records.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

constexpr uint32_t kSlot = 8820;  // 50 ms
constexpr uint32_t kOutputLatency = 5292;
constexpr uint32_t kWavHeaderBytes = 44;

class RecWavTest : public ::testing::Test {
  protected:
    void install(VirtualAudioConfig config) {
        audio_ = std::make_shared<VirtualAudio>(std::move(config));
        capture_ = std::make_unique<CRecWav>(dispatcher_, *audio_);
    }
    void TearDown() override {
        if (capture_) {
            capture_->stop();
        }
    }
    template <class Done>
    bool pumpUntil(Done done, std::chrono::seconds timeout = std::chrono::seconds(20)) {
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        while (!done()) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            dispatcher_.waitForWork(std::chrono::milliseconds(5));
            dispatcher_.pumpPending();
        }
        return true;
    }
    std::vector<int16_t> takeSamples() {
        const auto bytes = test::readBytes(take_);
        uint32_t length = 0;
        EXPECT_EQ(wavGetLength(take_, length), 1);
        EXPECT_EQ(bytes.size(), kWavHeaderBytes + length);
        return test::toSamples({bytes.begin() + kWavHeaderBytes, bytes.end()});
    }

    test::LogDirectory log_;
    std::string take_ = (log_.dir().path() / "take.wav").string();
    std::shared_ptr<VirtualAudio> audio_;
    QueueDispatcher dispatcher_;
    std::unique_ptr<CRecWav> capture_;
};

struct Levels {
    int32_t highest = 0;
    int calls = 0;
};

void recordLevels(int32_t first, int32_t second, void* context) {
    auto& levels = *static_cast<Levels*>(context);
    levels.highest = std::max({levels.highest, first, second});
    ++levels.calls;
}

// A singer with no accompaniment: the take is the captured stream as it
// stands, the voice arriving after the output's latency. A stop in the middle
// of a buffer takes every buffer back at once, the one being filled with what
// it holds, so the take ends on the last frame captured before the stop.
TEST_F(RecWavTest, VoiceAloneEndsOnTheLastFrameCapturedBeforeTheStop) {
    const auto voice = synthesiseVoice(44100 * 3);
    // Eight 50 ms buffers at ten times real time leave the test's thread
    // 40 ms to hand each one back before the converter would lose samples.
    constexpr int32_t kBuffers = 8;
    install({.outputLatencyBytes = kOutputLatency, .speed = 10, .loopbackGain = 0, .voice = voice});
    // The singer follows something heard: silence from an output of the test's own.
    auto output = audio_->makeOutput();
    test::BufferSet silence(80, kSlot);
    Levels levels;
    capture_->registerLevelMeter(recordLevels, &levels);
    capture_->setOutputFileName(take_);
    capture_->setEffectsEnabled(0);

    audio_->setClockStalled(true);
    ASSERT_EQ(capture_->startRecording(kNativeFormat, kSlot, kBuffers, nullptr, 0, 0), 1);
    ASSERT_EQ(output->open(kNativeFormat, {}), kAudioOk);
    ASSERT_TRUE(test::queueAll(*output, silence, &OutputDevice::write));
    audio_->setClockStalled(false);
    // The simulation steps 10 ms at a time, a fifth of a buffer.
    ASSERT_TRUE(pumpUntil([&] {
        const uint32_t captured = capture_->capturePosition();
        return captured > 2 * 176400 && captured % kSlot != 0;
    }));

    audio_->setClockStalled(true);
    const uint32_t capturedAtStop = capture_->capturePosition();
    ASSERT_NE(capturedAtStop % kSlot, 0u) << "the stop must fall inside a buffer";
    const uint32_t noticesAtStop = handledCaptureNotices();
    EXPECT_EQ(capture_->queuedCount(), kBuffers);
    EXPECT_EQ(capture_->stop(), 1);
    EXPECT_EQ(capture_->state(), kRecClosed);
    EXPECT_EQ(handledCaptureNotices() - noticesAtStop, uint32_t{kBuffers});
    audio_->setClockStalled(false);
    output->reset();
    output->close();

    const auto take = takeSamples();
    EXPECT_EQ(take.size() * 2, capturedAtStop);
    const std::size_t lead = kOutputLatency / 2;
    ASSERT_GT(take.size(), lead + 44100);
    EXPECT_TRUE(std::all_of(take.begin(), take.begin() + lead, [](int16_t s) { return s == 0; }));
    const std::size_t compared = std::min(take.size() - lead, voice.size());
    EXPECT_TRUE(std::equal(voice.begin(), voice.begin() + compared, take.begin() + lead));
    EXPECT_GT(levels.calls, 0);
    EXPECT_GT(levels.highest, 3000);
    EXPECT_LE(levels.highest, 32767);
}

TEST_F(RecWavTest, StartIsRefusedWhileCapturingAndAnUncreatableFileLeavesNothingOpen) {
    install({.speed = 20});
    capture_->setOutputFileName((log_.dir().path() / "missing" / "take.wav").string());
    EXPECT_EQ(capture_->startRecording(kNativeFormat, kSlot, 3, nullptr, 0, 0), 0);
    EXPECT_NE(capture_->lastError().find("cannot be created"), std::string::npos);
    EXPECT_EQ(capture_->stop(), 1);

    capture_->setOutputFileName(take_);
    ASSERT_EQ(capture_->startRecording(kNativeFormat, kSlot, 40, nullptr, 0, 0), 1);
    EXPECT_EQ(capture_->queuedCount(), 30);
    EXPECT_EQ(capture_->startLevelMonitor(kNativeFormat, kSlot, 3, nullptr, 0, 0), 0);
    EXPECT_EQ(capture_->state(), kRecCapturing);
}

struct SeenFaults {
    std::vector<CaptureFault> faults;
    uint64_t frameAtFirst = 0;
    VirtualAudio* audio = nullptr;
};

void recordFault(CaptureFault fault, void* context) {
    auto& seen = *static_cast<SeenFaults*>(context);
    if (seen.faults.empty()) {
        seen.frameAtFirst = seen.audio->frameNow();
    }
    seen.faults.push_back(fault);
}

// An input that stops handing buffers back is a lost microphone once it has
// been silent for 2 seconds of the devices' clock, and only then. Nobody
// stops the take meanwhile: the engine notices by itself. The stop then
// takes the held buffers back and finishes the file with everything captured
// before the hang.
TEST_F(RecWavTest, AnInputSilentForTwoSecondsIsALostMicrophoneAndAShorterHangIsNot) {
    constexpr uint64_t kFrames = 44100;
    // At real speed: a stall of the test thread under load must not stretch the
    // short hang past the limit.
    install({.speed = 1});
    SeenFaults seen;
    seen.audio = audio_.get();
    capture_->registerFaultNotice(recordFault, &seen);
    capture_->setOutputFileName(take_);
    const uint32_t noticesBefore = handledCaptureNotices();
    ASSERT_EQ(capture_->startRecording(kNativeFormat, kSlot, 3, nullptr, 0, 0), 1);
    const auto runUntilFrame = [&](uint64_t frame) {
        return pumpUntil([&] { return audio_->frameNow() >= frame; });
    };

    ASSERT_TRUE(runUntilFrame(kFrames / 2));
    audio_->setInputHangs(true);
    ASSERT_TRUE(runUntilFrame(audio_->frameNow() + kFrames * 3 / 2));
    audio_->setInputHangs(false);
    ASSERT_TRUE(runUntilFrame(audio_->frameNow() + kFrames));
    EXPECT_TRUE(seen.faults.empty()) << "a hang of 1.5 s is only a hiccup";

    const uint32_t blocksBeforeHang = handledCaptureNotices() - noticesBefore;
    const uint64_t hangFrame = audio_->frameNow();
    audio_->setInputHangs(true);
    ASSERT_TRUE(pumpUntil([&] { return !seen.faults.empty(); }));
    EXPECT_EQ(seen.faults, std::vector{CaptureFault::kInputDevice});
    EXPECT_EQ(capture_->lastError(), "the microphone delivered nothing for 2 seconds");
    // The last buffer came back at most one buffer (50 ms) before the hang.
    EXPECT_GE(seen.frameAtFirst - hangFrame, 2 * kFrames - kFrames / 20);
    EXPECT_LT(seen.frameAtFirst - hangFrame, 3 * kFrames);
    EXPECT_EQ(capture_->state(), kRecCapturing) << "the owner decides when to stop";

    EXPECT_EQ(capture_->stop(), 1);
    EXPECT_EQ(capture_->state(), kRecClosed);
    EXPECT_EQ(seen.faults.size(), 1u);
    // The three buffers the device filled and held during the hang come too.
    EXPECT_GE(takeSamples().size() * 2, (blocksBeforeHang + 3) * kSlot);
}

// With an accompaniment that never arrives the voice ring fills: every block
// beyond its 29 is refused and logged, and only those are lost.
TEST_F(RecWavTest, VoiceRingOverflowLogsEachRefusedBlock) {
    install({.speed = 50});
    MixingWaveCtl silentPlayer(*audio_);
    capture_->setOutputFileName(take_);
    constexpr uint32_t kSmallSlot = 4410;
    ASSERT_EQ(capture_->startRecording(kNativeFormat, kSmallSlot, 3, &silentPlayer, 1, 1 << 30), 1);
    const uint32_t before = handledCaptureNotices();
    ASSERT_TRUE(pumpUntil([&] { return handledCaptureNotices() >= before + 33; }));
    capture_->stop();
    // The stop hands the last buffer back part-filled.
    const uint32_t offered = (capture_->syncMx().microphoneBytes() + kSmallSlot - 1) / kSmallSlot;
    const auto messages = log_.messages();
    EXPECT_EQ(messages.size(), offered - 29);
    EXPECT_TRUE(std::all_of(messages.begin(), messages.end(), [](const std::string& m) {
        return m == "ﾊﾞｯﾌｧｵｰﾊﾞｰﾌﾛｰ:SyncMx.P1_WriteBuf";
    }));
}

}  // namespace
}  // namespace tunebox
