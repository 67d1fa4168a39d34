#pragma once
// A private test sound server of a test's own, started and stopped through
// scripts/test-audio-server.sh on its own directory.

#include <cstdlib>
#include <string>

// For tests that need a sound server: in CI a missing one is a failure, on a
// developer's machine the test is skipped.
#define TUNEBOX_REQUIRE_SOUND_SERVER(reachable)                                       \
    do {                                                                              \
        if (!(reachable)) {                                                           \
            if (std::getenv("CI") != nullptr) {                                       \
                FAIL() << "no sound server reachable (scripts/test-audio-server.sh)"; \
            }                                                                         \
            GTEST_SKIP() << "no sound server reachable";                              \
        }                                                                             \
    } while (false)

namespace tunebox::test {

class TestAudioServer {
  public:
    explicit TestAudioServer(std::string directory) : directory_(std::move(directory)) {
        run("start");
    }
    ~TestAudioServer() { stop(); }
    TestAudioServer(const TestAudioServer&) = delete;
    TestAudioServer& operator=(const TestAudioServer&) = delete;

    std::string address() const { return "unix:" + directory_ + "/runtime/native"; }
    void stop() {
        if (running_) {
            run("stop");
            running_ = false;
        }
    }

  private:
    void run(const std::string& action) {
        const std::string command = "TUNEBOX_TEST_AUDIO_DIR='" + directory_ + "' bash '" +
                                    TUNEBOX_SOURCE_DIR + "/scripts/test-audio-server.sh' " +
                                    action + " >/dev/null 2>&1";
        running_ = std::system(command.c_str()) == 0 || action == "stop";
    }

    std::string directory_;
    bool running_ = false;
};

}  // namespace tunebox::test
