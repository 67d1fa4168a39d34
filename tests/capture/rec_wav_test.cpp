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
// stands, the voice arriving after the output's latency. The stop takes
// exactly the buffers still at the device, and the one returned last closes
// the file.
TEST_F(RecWavTest, VoiceAloneIsWrittenAsCapturedAndStopTakesEveryOutstandingBuffer) {
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
    const uint32_t noticesBefore = handledCaptureNotices();

    audio_->setClockStalled(true);
    ASSERT_EQ(capture_->startRecording(kNativeFormat, kSlot, kBuffers, nullptr, 0, 0), 1);
    ASSERT_EQ(output->open(kNativeFormat, {}), kAudioOk);
    ASSERT_TRUE(test::queueAll(*output, silence, &OutputDevice::write));
    audio_->setClockStalled(false);
    ASSERT_TRUE(pumpUntil([&] { return capture_->capturePosition() > 2 * 176400; }));

    const uint32_t noticesAtStop = handledCaptureNotices();
    EXPECT_EQ(capture_->queuedCount(), kBuffers);
    EXPECT_EQ(capture_->stop(), 1);
    EXPECT_EQ(capture_->state(), kRecClosed);
    EXPECT_EQ(handledCaptureNotices() - noticesAtStop, uint32_t{kBuffers});
    output->reset();
    output->close();

    const auto take = takeSamples();
    EXPECT_EQ(take.size() * 2, (handledCaptureNotices() - noticesBefore) * kSlot);
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

// An input that stops handing buffers back cannot hold a stop forever: the
// buffers are taken back once their time is well past, and the file is
// finished with what came before.
TEST_F(RecWavTest, StopReturnsFromAHangingInputWithAFinishedFile) {
    install({.speed = 20});
    capture_->setOutputFileName(take_);
    ASSERT_EQ(capture_->startRecording(kNativeFormat, kSlot, 3, nullptr, 0, 0), 1);
    const uint32_t before = handledCaptureNotices();
    ASSERT_TRUE(pumpUntil([&] { return handledCaptureNotices() >= before + 5; }));
    audio_->setInputHangs(true);
    EXPECT_EQ(capture_->stop(), 1);
    EXPECT_EQ(capture_->state(), kRecClosed);
    EXPECT_EQ(takeSamples().size() * 2 % kSlot, 0u);
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
    const uint32_t offered = capture_->syncMx().microphoneBytes() / kSmallSlot;
    const auto messages = log_.messages();
    EXPECT_EQ(messages.size(), offered - 29);
    EXPECT_TRUE(std::all_of(messages.begin(), messages.end(), [](const std::string& m) {
        return m == "ﾊﾞｯﾌｧｵｰﾊﾞｰﾌﾛｰ:SyncMx.P1_WriteBuf";
    }));
}

}  // namespace
}  // namespace tunebox
