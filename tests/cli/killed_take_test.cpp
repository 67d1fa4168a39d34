// A take whose process is killed outright (SIGKILL: no handler, no close)
// still leaves a file every player opens, holding the take up to less than a
// second before the kill, sample for sample what a finished take holds.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

#include "core/wave_format.h"
#include "playback/wav_length.h"
#include "support/riff_bytes.h"
#include "support/take_runner.h"

namespace tunebox {
namespace {

constexpr std::array<const char*, 3> kKillAfter = {"1.3", "2.7", "4.1"};

class KilledTakeTest : public ::testing::Test, protected test::TakeRunner {};

// Each take runs in a folder of its own (its own log and settings) in real
// time. The clock of a take starts when its file appears, which is when
// capture starts. The kills run side by side with a take that ends with its
// accompaniment: the reference for the samples, and the measure of the
// start-up, the time before the first block that reaches the file begins
// (the accompaniment has to start first).
std::string killScript() {
    std::string script =
        "export TUNEBOX_AUDIO=virtual\n"
        "take() { mkdir \"$1\"; cd \"$1\"; export TUNEBOX_CONFIG_DIR=$PWD;"
        " \"$TUNEBOX\" record --accompaniment ../song.wav --start 3 --output take.wav"
        " --no-echo >/dev/null & pid=$!; until [ -e take.wav ]; do sleep 0.01; done; }\n"
        "\"$TUNEBOX\" tune song.wav >/dev/null || exit 1\n"
        "(take whole; start=$(date +%s.%N)\n"
        " until [ \"$(stat -c %s take.wav)\" -gt 44 ]; do sleep 0.01; done\n"
        " awk -v from=$start -v to=$(date +%s.%N) 'BEGIN { print to - from }' >first-block\n"
        " wait $pid) &\n"
        "whole=$!\n";
    for (const char* seconds : kKillAfter) {
        script += std::string("(take killed-") + seconds + "; sleep " + seconds +
                  "; kill -KILL $pid) &\n";
    }
    return script + "wait $whole || exit 1\nwait\n";
}

TEST_F(KilledTakeTest, AKilledTakeKeepsAllButItsLastSecondExactly) {
    const auto run = runScript(killScript());
    ASSERT_EQ(run.status, 0) << run.err;
    expectFinishedTake("whole/take.wav");
    const test::Bytes whole = test::readBytes(dir() / "whole/take.wav");
    const double startup = std::stod(test::readText(dir() / "whole/first-block")) -
                           double(kEngineBlockBytes) / kNativeBytesPerSecond;

    for (const char* seconds : kKillAfter) {
        SCOPED_TRACE(seconds);
        const auto path = dir() / (std::string("killed-") + seconds) / "take.wav";
        const test::Bytes bytes = test::readBytes(path);
        ASSERT_GE(bytes.size(), 44u);
        const uint32_t declared = test::loadLe32At(bytes, 40);
        EXPECT_EQ(declared % 4, 0u);
        EXPECT_LE(44 + declared, bytes.size());
        EXPECT_EQ(test::loadLe32At(bytes, 4), declared + 36);

        uint32_t length = 0;
        ASSERT_EQ(wavGetLength(path.string(), length), 1);
        EXPECT_EQ(length, declared);
        EXPECT_EQ(test::run("sox --i -s '" + path.string() + "' | grep -qx " +
                            std::to_string(declared / 4)),
                  0);

        const double alive = std::stod(seconds);
        EXPECT_GE(declared, (alive - startup - 1.0) * kNativeBytesPerSecond) << startup;
        ASSERT_LE(declared, whole.size() - 44);
        EXPECT_TRUE(
            std::equal(bytes.begin() + 44, bytes.begin() + 44 + declared, whole.begin() + 44));
    }
}

}  // namespace
}  // namespace tunebox
