// The key moved while a take runs: the device never falls silent, the
// capture keeps every block.

#include <cstring>

#include "session/take_harness.h"
#include "session/voice_file.h"
#include "support/log_records.h"
#include "support/loopback_listener.h"
#include "support/signal_measure.h"
#include "support/test_files.h"

namespace tunebox::test {
namespace {

constexpr std::size_t kOneMsFrames = kNativeSampleRate / 1000;

class KeyTempoTakeTest : public TakeTest {
  protected:
    // The microphone hears the loudspeaker alone: the voice file is then
    // exactly the device's stream as it was played. Four times real time
    // leaves the stage its share of a loaded machine.
    void SetUp() override {
        startAudio(4, {.loopbackGain = 1.0f, .voice = std::vector<int16_t>(2, 0)});
    }

    void playUntil(double seconds) {
        ASSERT_TRUE(runUntil([&] {
            return controller().accompanimentPlayer().wavGetDevicePosition() >=
                   seconds * kNativeBytesPerSecond;
        }));
    }

    LogDirectory log_;
};

TEST_F(KeyTempoTakeTest, MovingTheKeyDuringATakeLeavesNoGapAndLosesNoBlock) {
    TrackEntry track = song(9);
    track.keyTempoMayMove = true;
    ASSERT_TRUE(controller().rec({track, 0, 0}).capturing);
    WaveCtl& player = controller().accompanimentPlayer();
    playUntil(1.5);
    player.wavSetKeyTempo({.semitones = 3});
    playUntil(3);
    player.wavSetKeyTempo({.semitones = -2, .tempoPercent = 110});
    playUntil(4.5);
    player.wavSetKeyTempo({});
    ASSERT_TRUE(runUntil([&] { return player.wavIsStopped() == 1; }));
    controller().stopRecorder();

    // The silence before the first sound and after the last is the
    // latency and the wait for STOP, not a gap.
    const auto voice = wavDataSamples(voiceFilePath(take_));
    std::vector<uint8_t> bytes(voice.size() * 2);
    std::memcpy(bytes.data(), voice.data(), bytes.size());
    const auto heard = LoopbackListener::trimSilence(bytes);
    EXPECT_GT(heard.size(), 8 * kNativeBytesPerSecond);
    EXPECT_LE(longestSilence(heard), kOneMsFrames);
    for (const std::string& message : log_.messages()) {
        EXPECT_EQ(message.find("ﾊﾞｯﾌｧ"), std::string::npos) << message;
    }
}

}  // namespace
}  // namespace tunebox::test
