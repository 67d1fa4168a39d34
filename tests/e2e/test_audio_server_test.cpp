// The private test servers of scripts/test-audio-server.sh: each set-up
// serves what it promises and leaves no process behind when stopped.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "support/command_runner.h"
#include "support/temp_dir.h"
#include "support/test_audio_server.h"

namespace tunebox {
namespace {

struct ServerChoice {
    std::string server;
    int rate;
    int keepAlive;
    int delayMs;
};

// Exit status: 77 no server could start, 3 wrong sink or source, 4 wrong
// rate, 5 a process outlived stop.
std::string checkScript(const ServerChoice& choice) {
    const std::string source = choice.delayMs > 0 ? "tunebox_late.monitor" : "tunebox_null.monitor";
    return "export TUNEBOX_TEST_AUDIO_DIR=/tmp/tunebox-e2e-setups TUNEBOX_TEST_SERVER=" +
           choice.server + " TUNEBOX_TEST_RATE=" + std::to_string(choice.rate) +
           " TUNEBOX_TEST_KEEPALIVE=" + std::to_string(choice.keepAlive) +
           " TUNEBOX_TEST_DELAY_MS=" + std::to_string(choice.delayMs) + "\n" + "server='" +
           TUNEBOX_SOURCE_DIR + "/scripts/test-audio-server.sh'\n" +
           "bash \"$server\" start >/dev/null 2>&1 || { bash \"$server\" stop; exit 77; }\n" +
           "eval \"$(bash \"$server\" env)\"\n" +
           "pids=$(cat \"$TUNEBOX_TEST_AUDIO_DIR\"/*.pid 2>/dev/null)\n" + "info=$(pactl info)\n" +
           "sinks=$(pactl list short sinks)\n" + "bash \"$server\" stop >/dev/null 2>&1\n" +
           "echo \"$info\" | grep -q 'Default Sink: tunebox_null$' || exit 3\n" +
           "echo \"$info\" | grep -q 'Default Source: " + source + "$' || exit 3\n" +
           "echo \"$sinks\" | grep tunebox_null | grep -q '" + std::to_string(choice.rate) +
           "Hz' || exit 4\n" +
           "for pid in $pids; do case \"$(ps -o stat= -p \"$pid\")\" in '' | Z*) ;; *) exit 5 ;; "
           "esac; done\n";
}

TEST(TestAudioServer, EachSetUpServesItsSinkAndSourceAndStopsEverythingItStarted) {
    const ServerChoice choices[] = {
        {"pulse", 48000, 0, 0},
        {"pulse", 44100, 1, 60},
        {"pipewire", 44100, 1, 0},
        {"pipewire", 48000, 0, 60},
    };
    const test::TempDir dir;
    for (const ServerChoice& choice : choices) {
        SCOPED_TRACE(choice.server + " " + std::to_string(choice.rate) + " Hz, keep-alive " +
                     std::to_string(choice.keepAlive) + ", delay " +
                     std::to_string(choice.delayMs) + " ms");
        std::ofstream(dir / "check.sh") << checkScript(choice);
        const int status = test::run("bash '" + (dir / "check.sh").string() + "'");
        TUNEBOX_REQUIRE_SOUND_SERVER(status != 77);
        EXPECT_EQ(status, 0);
    }
}

TEST(TestAudioServer, AnUnknownSetUpIsRefusedWithStatusTwo) {
    // A fixed graph cycle is PipeWire's alone.
    for (const char* setUp :
         {"TUNEBOX_TEST_SERVER=jack", "TUNEBOX_TEST_SERVER=pulse TUNEBOX_TEST_QUANTUM=1024",
          "TUNEBOX_TEST_SERVER=pipewire TUNEBOX_TEST_QUANTUM=short"}) {
        SCOPED_TRACE(setUp);
        const int status = test::run(
            std::string("TUNEBOX_TEST_AUDIO_DIR=/tmp/tunebox-e2e-setups ") + setUp + " bash '" +
            TUNEBOX_SOURCE_DIR + "/scripts/test-audio-server.sh' start 2>/dev/null");
        EXPECT_EQ(status, 2);
    }
    // Should one have started after all, it must not answer the next run.
    test::run("TUNEBOX_TEST_AUDIO_DIR=/tmp/tunebox-e2e-setups bash '" +
              std::string(TUNEBOX_SOURCE_DIR) + "/scripts/test-audio-server.sh' stop");
}

}  // namespace
}  // namespace tunebox
