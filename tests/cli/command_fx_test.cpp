// The fx command as a user runs it: the effect chain over a WAV file. What
// it refuses, and that it never writes over its input, CommandFilesTest shows.

#include <gtest/gtest.h>

#include <cstring>

#include "effects/effect_chain.h"
#include "support/command_runner.h"
#include "support/riff_bytes.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

constexpr std::size_t kHeaderBytes = 44;

test::Bytes noiseSamples(std::size_t bytes) {
    test::Bytes samples(bytes);
    uint32_t seed = 3;
    for (auto& byte : samples) {
        seed = seed * 1664525u + 1013904223u;
        byte = static_cast<uint8_t>(seed >> 24);
    }
    return samples;
}

class CommandFxTest : public ::testing::Test {
  protected:
    int fx(const std::string& arguments) {
        last_ = test::runTunebox(dir_, "fx " + arguments);
        return last_.status;
    }
    std::string errorText() const { return last_.err; }
    std::string path(const std::string& name) const { return (dir_ / name).string(); }

    test::TempDir dir_;
    test::RunResult last_{};
};

// The command must give exactly what the chain gives over engine-sized
// blocks with the options set the same way.
TEST_F(CommandFxTest, OutputIsTheChainOverEngineSizedBlocks) {
    const test::Bytes samples = noiseSamples(4 * kEngineBlockBytes + 1000);
    test::writeFile(path("in.wav"), test::nativeWave(samples));
    ASSERT_EQ(fx("'" + path("in.wav") + "' '" + path("fx.wav") +
                 "' --echo --centre-cut --level 70 --eq 0,4,8,12,16,20,24,28,32,36"),
              0)
        << errorText();

    EffectControl ctl;
    ctl.blockSize = kEngineBlockBytes;
    ASSERT_EQ(fltEqualizerInit(ctl, {0, 4, 8, 12, 16, 20, 24, 28, 32, 36}, 44100), 1);
    ctl.equaliserFlag = ctl.reverbFlag = ctl.centreRemovalFlag = ctl.levelFlag = 1;
    ctl.level = 70;
    std::vector<int16_t> expected(samples.size() / 2);
    std::memcpy(expected.data(), samples.data(), samples.size());
    for (std::size_t offset = 0; offset < samples.size(); offset += kEngineBlockBytes) {
        const auto length = static_cast<uint32_t>(
            std::min<std::size_t>(kEngineBlockBytes, samples.size() - offset));
        fltEffectChain(ctl, expected.data() + offset / 2, length);
    }

    const test::Bytes written = test::readBytes(path("fx.wav"));
    ASSERT_EQ(written.size(), kHeaderBytes + samples.size());
    EXPECT_EQ(test::loadLe32At(written, 40), samples.size());
    EXPECT_EQ(test::loadLe32At(written, 24), kNativeFormat.samplesPerSec);
    EXPECT_EQ(std::memcmp(written.data() + kHeaderBytes, expected.data(), samples.size()), 0);
}

TEST_F(CommandFxTest, WithoutOptionsOnlyFullScaleNegativeSamplesChange) {
    const test::Bytes samples{0x00, 0x80, 0x34, 0x12, 0xff, 0xff, 0x00, 0x80};
    test::writeFile(path("in.wav"), test::nativeWave(samples));
    ASSERT_EQ(fx("'" + path("in.wav") + "' '" + path("fx.wav") + "'"), 0) << errorText();
    const test::Bytes written = test::readBytes(path("fx.wav"));
    EXPECT_EQ(test::Bytes(written.begin() + kHeaderBytes, written.end()),
              (test::Bytes{0x01, 0x80, 0x34, 0x12, 0xff, 0xff, 0x01, 0x80}));
}

// Whatever the players take, fx takes: other rates and channel counts, MP3.
TEST_F(CommandFxTest, AnyAccompanimentIsReadAsTheNativeFormat) {
    const std::string mono = path("mono.wav");
    const std::string mp3 = path("song.mp3");
    ASSERT_EQ(test::run("sox -n -r 8000 -c 1 -b 16 '" + mono + "' synth 1 sine 440 && " +
                        "lame --quiet '" + mono + "' '" + mp3 + "'"),
              0);
    for (const std::string& input : {mono, mp3}) {
        SCOPED_TRACE(input);
        ASSERT_EQ(fx("'" + input + "' '" + path("fx.wav") + "' --echo --overwrite"), 0)
            << errorText();
        const test::Bytes written = test::readBytes(path("fx.wav"));
        ASSERT_GT(written.size(), kHeaderBytes + kNativeBytesPerSecond / 2);
        EXPECT_EQ(test::loadLe32At(written, 24), kNativeFormat.samplesPerSec);
        EXPECT_EQ(test::loadLe32At(written, 40), written.size() - kHeaderBytes);
    }
}

TEST_F(CommandFxTest, BandValuesMustBeTenInRange) {
    test::writeFile(path("in.wav"), test::nativeWave(test::Bytes(400)));
    EXPECT_NE(fx("'" + path("in.wav") + "' '" + path("fx.wav") + "' --eq 1,2,3"), 0);
    EXPECT_NE(fx("'" + path("in.wav") + "' '" + path("fx.wav") + "' --eq 0,0,0,0,0,0,0,0,0,99"), 0);
    EXPECT_FALSE(std::filesystem::exists(path("fx.wav")));
}

}  // namespace
}  // namespace tunebox
