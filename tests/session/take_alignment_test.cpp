// Whole takes through the virtual devices: a known accompaniment, a known
// voice, exact latencies and no echo, so every sample of the take is known.
#include "capture/sync_mx.h"
#include "platform/settings.h"
#include "session/demo_tune.h"
#include "session/synthetic_voice.h"
#include "session/take_harness.h"
#include "support/scoped_environment.h"
#include "support/temp_dir.h"
#include "support/test_files.h"

namespace tunebox::test {
namespace {

constexpr uint32_t kOutputLatency = 5292;  // 30 ms
constexpr uint32_t kInputLatency = 3000;
constexpr std::size_t kWavHeaderBytes = 44;

class TakeAlignmentTest : public TakeTest {
  protected:
    void SetUp() override {
        writeNativeWav(song_, accompaniment_);
        startAudio(20, {.outputLatencyBytes = kOutputLatency,
                        .inputLatencyBytes = kInputLatency,
                        .loopbackGain = 0,
                        .voice = voice_});
        controller().setEcho(0);
        track_.path = song_;
        track_.length = static_cast<uint32_t>(accompaniment_.size() * 2);
    }

    // Both devices start at one instant of the virtual clock.
    void recAtOneInstant(RecordRequest request) {
        audio_->setClockStalled(true);
        ASSERT_TRUE(controller().rec(request).capturing);
        audio_->setClockStalled(false);
    }
    // Stops as soon as the accompaniment has played out.
    void runToTheEnd() {
        ASSERT_TRUE(runUntil([&] { return controller().accompanimentPlayer().wavIsStopped(); }));
        controller().stopRecorder();
    }

    std::vector<int16_t> takeSamples() {
        const auto bytes = readBytes(take_);
        EXPECT_GT(bytes.size(), kWavHeaderBytes);
        return toSamples({bytes.begin() + kWavHeaderBytes, bytes.end()});
    }

    // Every sample of the take is the clipped sum of the accompaniment and
    // the voice sung to it, `voiceLag` samples late (silence before the
    // voice).
    void expectEverySampleMixed(const std::vector<int16_t>& take, std::ptrdiff_t voiceLag = 0) {
        ASSERT_LE(take.size(), accompaniment_.size());
        std::size_t wrong = 0;
        std::size_t firstWrong = 0;
        for (std::size_t k = 0; k < take.size(); ++k) {
            const auto sung = static_cast<std::ptrdiff_t>(k) - voiceLag;
            const int16_t voice = sung >= 0 ? voice_[static_cast<std::size_t>(sung)] : 0;
            if (take[k] != mixSample(voice, accompaniment_[k], 100, 100) && wrong++ == 0) {
                firstWrong = k;
            }
        }
        EXPECT_EQ(wrong, 0u) << "first at sample " << firstWrong << " of " << take.size();
    }

    // The whole song, of which only the last part-block, which the player
    // cuts, may be missing.
    void expectSampleExactTake(std::ptrdiff_t voiceLag = 0) {
        const auto take = takeSamples();
        EXPECT_GT(take.size() * 2 + kEngineBlockBytes, accompaniment_.size() * 2);
        expectEverySampleMixed(take, voiceLag);
    }

    std::vector<int16_t> accompaniment_ = synthesiseDemoTune();
    std::vector<int16_t> voice_ = synthesiseVoice(44100 * (kDemoTuneSeconds + 4));
    TrackEntry track_;
};

TEST_F(TakeAlignmentTest, MeasuredDelayAlignsEverySample) {
    ASSERT_TRUE(controller().rec({track_, 0, 0}).capturing);
    runToTheEnd();
    const SyncMx& mixer = controller().capture().syncMx();
    EXPECT_GE(mixer.alignedDelay(), static_cast<int32_t>(kOutputLatency));
    expectSampleExactTake();
}

// A calibration saved for these devices moves every voice sample by what it
// adds: here 400 bytes (200 samples) earlier than the positions alone put it.
TEST_F(TakeAlignmentTest, TheSavedCalibrationOfTheDevicesIsAddedToTheMeasuredDelay) {
    const TempDir config;
    const ScopedEnvironment configDir("TUNEBOX_CONFIG_DIR", config.path().c_str());
    writeCalibration(audio_->devicePair(), 400);
    const RecStart started = controller().rec({track_, 0, 0});
    ASSERT_TRUE(started.capturing);
    ASSERT_TRUE(started.calibration);
    EXPECT_EQ(started.calibration->correctionBytes, 400);
    runToTheEnd();
    // The take stops when the song has played out, before the voice for its
    // last 200 samples, taken that much later, has been captured.
    auto take = takeSamples();
    take.resize(take.size() - 200);
    expectEverySampleMixed(take, -200);
}

// With both devices started at one instant of the virtual clock the true
// delay is the output latency, which the user types in.
TEST_F(TakeAlignmentTest, ManualDelayAlignsEverySample) {
    recAtOneInstant({track_, 1, kOutputLatency});
    runToTheEnd();
    EXPECT_EQ(controller().capture().syncMx().alignedDelay(), static_cast<int32_t>(kOutputLatency));
    expectSampleExactTake();
}

// A delay typed too small, below zero, cannot drop voice bytes: the voice is
// put that much later behind silence instead, and the take still ends with
// the accompaniment.
TEST_F(TakeAlignmentTest, NegativeManualDelayDelaysTheVoiceBehindSilence) {
    constexpr int32_t kTyped = -4000;
    recAtOneInstant({track_, 1, kTyped});
    runToTheEnd();
    EXPECT_EQ(controller().capture().syncMx().alignedDelay(), kTyped);
    expectSampleExactTake((kOutputLatency - kTyped) / 2);
}

// STOP in the middle of the song and of a capture buffer: the take ends on
// the last voice sample captured before the stop, over the accompaniment it
// was sung to; nothing of either comes after it.
TEST_F(TakeAlignmentTest, StopMidSongEndsVoiceAndAccompanimentOnTheSameSample) {
    recAtOneInstant({track_, 1, kOutputLatency});
    ASSERT_TRUE(runUntil([&] {
        const uint32_t captured = controller().capture().capturePosition();
        return captured > 3 * kNativeBytesPerSecond && captured % kEngineBlockBytes != 0;
    }));
    audio_->setClockStalled(true);
    const uint32_t captured = controller().capture().capturePosition();
    controller().stopRecorder();
    audio_->setClockStalled(false);
    EXPECT_FALSE(controller().captureActive());

    const auto take = takeSamples();
    EXPECT_EQ(take.size() * 2, captured - kOutputLatency);
    expectEverySampleMixed(take);
}

}  // namespace
}  // namespace tunebox::test
