#include "capture/round_trip.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "platform/virtual_audio.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

TEST(RoundTrip, ThroughTheVirtualDevicesTheMeasuredDelayIsTheConfiguredLatency) {
    VirtualAudio audio({.outputLatencyBytes = 7056, .inputLatencyBytes = 3000, .speed = 5});
    const RoundTrip trip = measureRoundTrip(audio);
    ASSERT_EQ(trip.deviceError, "");
    ASSERT_TRUE(trip.search.found) << trip.search.reason;
    // The devices start a few steps apart; both measures see the same start.
    EXPECT_EQ(trip.trueDelayBytes() % 4, 0);
    EXPECT_GE(trip.trueDelayBytes(), 7056);
    EXPECT_EQ(trip.positionDelayBytes, trip.trueDelayBytes());
}

TEST(RoundTrip, DeviceFaultsAreReportedNotMeasured) {
    VirtualAudio refusing({.failOutputOpen = true});
    EXPECT_NE(measureRoundTrip(refusing).deviceError.find("cannot open the audio output"),
              std::string::npos);

    VirtualAudio hanging({.speed = 50});
    hanging.setInputHangs(true);
    EXPECT_EQ(measureRoundTrip(hanging).deviceError, "the audio devices stopped returning buffers");
}

std::string runCalibrate(const test::TempDir& config, const std::string& settings, int& status) {
    const std::string output = (config / "out.txt").string();
    const std::string command = "TUNEBOX_AUDIO=virtual TUNEBOX_VIRTUAL_SPEED=5 " + settings +
                                " TUNEBOX_CONFIG_DIR='" + config.path().string() + "' '" +
                                TUNEBOX_EXE + "' calibrate --save >'" + output + "' 2>&1";
    status = WEXITSTATUS(std::system(command.c_str()));
    std::ifstream file(output);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

TEST(CalibrateCommand, SavesWhatThePositionsMissForTheDevicesOnlyWhenItFoundTheSignal) {
    test::TempDir config;
    int status = -1;
    std::string text = runCalibrate(config, "TUNEBOX_VIRTUAL_LOOPBACK=0", status);
    EXPECT_EQ(status, 1);
    EXPECT_NE(text.find("the input is silent; nothing saved"), std::string::npos) << text;
    EXPECT_FALSE(std::filesystem::exists(config / "Tunebox.INI"));

    text = runCalibrate(config, "TUNEBOX_VIRTUAL_OUTPUT_LATENCY=2000", status);
    EXPECT_EQ(status, 0) << text;
    EXPECT_NE(text.find("run 3: round trip"), std::string::npos) << text;
    EXPECT_NE(text.find("correction:"), std::string::npos) << text;
    std::ifstream file(config / "Tunebox.INI");
    std::stringstream ini;
    ini << file.rdbuf();
    // The virtual positions see the whole round trip: nothing to correct.
    EXPECT_NE(ini.str().find("[CALIBRATION]\nvirtual output -> virtual input=0\n"),
              std::string::npos)
        << ini.str();
    EXPECT_EQ(ini.str().find("MANUAL_DIFF"), std::string::npos) << ini.str();
}

}  // namespace
}  // namespace tunebox
