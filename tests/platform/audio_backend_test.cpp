#include "platform/audio_backend.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace tunebox {
namespace {

TEST(AudioBackend, TheEnvironmentChoosesAndAnUnknownNameNeverPlaysElsewhere) {
    ::setenv("TUNEBOX_AUDIO", "virtual", 1);
    EXPECT_EQ(makeAudioBackendFromEnvironment()->name(), "virtual");
    ::setenv("TUNEBOX_AUDIO", "pulse", 1);
    EXPECT_EQ(makeAudioBackendFromEnvironment()->name(), "pulse");

    ::setenv("TUNEBOX_AUDIO", "speakers", 1);
    const auto backend = makeAudioBackendFromEnvironment();
    auto output = backend->makeOutput();
    EXPECT_EQ(output->open(kNativeFormat, {}), kAudioNoDriver);
    EXPECT_NE(output->lastError().find("\"speakers\""), std::string::npos);
    EXPECT_EQ(backend->inputDeviceCount(), 0u);
    ::unsetenv("TUNEBOX_AUDIO");
}

}  // namespace
}  // namespace tunebox
