// The player on a real sound server: the private test server of
// scripts/test-audio-server.sh, started for this test on its own directory.
#include <gtest/gtest.h>

#include "platform/pulse_audio.h"
#include "playback/wave_ctl.h"
#include "support/player_support.h"
#include "support/temp_dir.h"
#include "support/test_audio_server.h"

namespace tunebox {
namespace {

TEST(PlaybackOnPulseAudio, AFiveSecondFilePlaysToItsEndAndThePlayerStopsByItself) {
    test::TestAudioServer server("/tmp/tunebox-test-audio-playback");
    auto audio = std::make_shared<PulseAudio>(server.address());
    TUNEBOX_REQUIRE_SOUND_SERVER(audio->outputDeviceCount() > 0);
    test::TempDir dir;
    const uint32_t length = 5 * kNativeBytesPerSecond;
    ASSERT_TRUE(test::writeWav(dir / "take.wav", test::patternBytes(length)));

    WaveCtl player(*audio);
    test::initPlayer(player);
    ASSERT_EQ(player.wavOpenFile((dir / "take.wav").string(), 0, length), 1);
    const auto started = std::chrono::steady_clock::now();
    ASSERT_EQ(player.wavPlay(), 1) << player.lastDeviceError();
    uint32_t lastSlider = 0;
    ASSERT_TRUE(
        test::waitUntil([&] { return player.wavIsStopped() == 1; }, std::chrono::seconds(15),
                        [&] { lastSlider = std::max(lastSlider, player.wavGetSliderPos()); }));
    const auto took = std::chrono::steady_clock::now() - started;
    // Nine whole buffers (4.68 s) are heard; the tenth reaches the end and is cut.
    EXPECT_GT(took, std::chrono::milliseconds(4500));
    EXPECT_LT(took, std::chrono::milliseconds(6500));
    EXPECT_EQ(lastSlider, 8000u);                  // whole device seconds: 4 of 5
    EXPECT_EQ(player.wavGetDevicePosition(), 0u);  // the device is closed
}

}  // namespace
}  // namespace tunebox
