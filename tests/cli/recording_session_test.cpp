// Whole takes through the virtual devices: a known accompaniment, a known
// voice, exact latencies and no echo, so every sample of the take is known.
#include "app/cli/recording_session.h"

#include <gtest/gtest.h>

#include "session/demo_tune.h"
#include "session/synthetic_voice.h"
#include "capture/sync_mx.h"
#include "platform/virtual_audio.h"
#include "support/native_wav.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

constexpr uint32_t kOutputLatency = 5292;  // 30 ms
constexpr uint32_t kInputLatency = 3000;
constexpr std::size_t kWavHeaderBytes = 44;

class RecordingTakeTest : public ::testing::Test {
  protected:
    void SetUp() override {
        test::writeNativeWav(accompanimentPath_, accompaniment_);
        audio_ = std::make_shared<VirtualAudio>(VirtualAudioConfig{
            .outputLatencyBytes = kOutputLatency,
            .inputLatencyBytes = kInputLatency,
            .speed = 20,
            .loopbackGain = 0,
            .voice = voice_,
        });
        options_.accompaniment = accompanimentPath_;
        options_.output = (dir_.path() / "take.wav").string();
        options_.echo = 0;
    }

    void runToTheEnd(cli::RecordingSession& session) {
        while (session.capture().isActive() && !session.accompanimentEnded()) {
            session.runFor(std::chrono::milliseconds(20));
        }
        session.stop();
    }

    // Every sample of the take is the clipped sum of the accompaniment and
    // the voice sung to it, `voiceLag` samples late (silence before the
    // voice); only the last part-block of the accompaniment, which the
    // player cuts, may be missing.
    void expectSampleExactTake(std::ptrdiff_t voiceLag = 0) {
        const auto bytes = test::readBytes(options_.output);
        ASSERT_GT(bytes.size(), kWavHeaderBytes);
        const auto take = test::toSamples({bytes.begin() + kWavHeaderBytes, bytes.end()});
        ASSERT_LE(take.size(), accompaniment_.size());
        EXPECT_GT(take.size() * 2 + kEngineBlockBytes, accompaniment_.size() * 2);
        std::size_t wrong = 0;
        std::size_t firstWrong = 0;
        for (std::size_t k = 0; k < take.size(); ++k) {
            const auto sung = static_cast<std::ptrdiff_t>(k) - voiceLag;
            const int16_t voice = sung >= 0 ? voice_[static_cast<std::size_t>(sung)] : 0;
            if (take[k] != mixSample(voice, accompaniment_[k], 100, 100) && wrong++ == 0) {
                firstWrong = k;
            }
        }
        EXPECT_EQ(wrong, 0u) << "first at sample " << firstWrong;
    }

    test::TempDir dir_;
    std::string accompanimentPath_ = (dir_.path() / "accompaniment.wav").string();
    std::vector<int16_t> accompaniment_ = synthesiseDemoTune();
    std::vector<int16_t> voice_ = synthesiseVoice(44100 * (kDemoTuneSeconds + 4));
    std::shared_ptr<VirtualAudio> audio_;
    cli::RecordingOptions options_;
};

TEST_F(RecordingTakeTest, MeasuredDelayAlignsEverySample) {
    cli::RecordingSession session(*audio_);
    ASSERT_EQ(session.rec(options_), 1) << session.error();
    runToTheEnd(session);
    const SyncMx& mixer = session.capture().syncMx();
    EXPECT_GE(mixer.alignedDelay(), static_cast<int32_t>(kOutputLatency));
    expectSampleExactTake();
}

// With both devices started at one instant of the virtual clock the true
// delay is the output latency, which the user types in.
TEST_F(RecordingTakeTest, ManualDelayAlignsEverySample) {
    options_.manualFlag = 1;
    options_.manualDelay = kOutputLatency;
    cli::RecordingSession session(*audio_);
    audio_->setClockStalled(true);
    ASSERT_EQ(session.rec(options_), 1) << session.error();
    audio_->setClockStalled(false);
    runToTheEnd(session);
    EXPECT_EQ(session.capture().syncMx().alignedDelay(), static_cast<int32_t>(kOutputLatency));
    expectSampleExactTake();
}

// A delay typed too small, below zero, cannot drop voice bytes: the voice is
// put that much later behind silence instead, and the take still ends with
// the accompaniment.
TEST_F(RecordingTakeTest, NegativeManualDelayDelaysTheVoiceBehindSilence) {
    constexpr int32_t kTyped = -4000;
    options_.manualFlag = 1;
    options_.manualDelay = kTyped;
    cli::RecordingSession session(*audio_);
    audio_->setClockStalled(true);
    ASSERT_EQ(session.rec(options_), 1) << session.error();
    audio_->setClockStalled(false);
    runToTheEnd(session);
    EXPECT_EQ(session.capture().syncMx().alignedDelay(), kTyped);
    expectSampleExactTake((kOutputLatency - kTyped) / 2);
}

}  // namespace
}  // namespace tunebox
