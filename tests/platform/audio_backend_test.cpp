#include "platform/audio_backend.h"

#include <gtest/gtest.h>

#include "support/scoped_environment.h"

namespace tunebox {
namespace {

TEST(AudioBackend, TheEnvironmentChoosesAndAnUnknownNameNeverPlaysElsewhere) {
    for (const char* name : {"virtual", "pulse"}) {
        const test::ScopedEnvironment chosen("TUNEBOX_AUDIO", name);
        EXPECT_EQ(makeAudioBackendFromEnvironment()->name(), name);
    }
    const test::ScopedEnvironment unknown("TUNEBOX_AUDIO", "speakers");
    const auto backend = makeAudioBackendFromEnvironment();
    auto output = backend->makeOutput();
    EXPECT_EQ(output->open(kNativeFormat, {}), kAudioNoDriver);
    EXPECT_NE(output->lastError().find("\"speakers\""), std::string::npos);
    EXPECT_EQ(backend->inputDeviceCount(), 0u);
}

}  // namespace
}  // namespace tunebox
