#include "playback/wav_writer.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <memory>

#include "playback/wav_length.h"
#include "support/command_runner.h"
#include "support/riff_bytes.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

class WavWriterTest : public ::testing::Test {
  protected:
    // Writes `samples` in two appends and optionally closes.
    void writeSamples(const test::Bytes& samples, bool close) {
        wavResetWriter(writer_);
        ASSERT_EQ(wavCreateFile(path_, writer_), 1);
        const auto half = static_cast<uint32_t>(samples.size() / 2);
        ASSERT_EQ(wavWrite(writer_, samples.data(), half), 1);
        ASSERT_EQ(
            wavWrite(writer_, samples.data() + half, static_cast<uint32_t>(samples.size()) - half),
            1);
        if (close) {
            ASSERT_EQ(wavCloseFile(writer_), 1);
            EXPECT_EQ(writer_.file, nullptr);
        }
    }

    test::TempDir dir_;
    std::string path_ = (dir_ / "take.wav").string();
    WaveWriter writer_;
};

TEST_F(WavWriterTest, ClosedFileHasTheCanonicalHeaderAndReadsBack) {
    const test::Bytes samples = test::counting(176400);
    writeSamples(samples, true);

    const test::Bytes bytes = test::readBytes(path_);
    ASSERT_EQ(bytes.size(), 44 + samples.size());
    const test::Bytes canonical = test::nativeWave(samples);
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.begin() + 44, canonical.begin()));
    EXPECT_EQ(test::loadLe32At(bytes, 4), bytes.size() - 8);
    EXPECT_EQ(test::loadLe32At(bytes, 40), bytes.size() - 44);

    uint32_t length = 0;
    ASSERT_EQ(wavGetLength(path_, length), 1);
    EXPECT_EQ(length, samples.size());
}

TEST_F(WavWriterTest, SoxAcceptsTheFile) {
    writeSamples(test::counting(4 * 4410), true);
    EXPECT_EQ(test::run("sox --i -D '" + path_ + "' | grep -qx 0.100000"), 0);
    EXPECT_EQ(test::run("sox --i -r '" + path_ + "' | grep -qx 44100"), 0);
    EXPECT_EQ(test::run("sox --i -c '" + path_ + "' | grep -qx 2"), 0);
    EXPECT_EQ(test::run("sox --i -b '" + path_ + "' | grep -qx 16"), 0);
}

// A take whose process dies keeps what its header last declared: while the
// writer is open the sizes trail the written data by less than one refresh
// interval and never run past it, and the file reads back as it stands.
TEST_F(WavWriterTest, AnOpenFileDeclaresAllButTheLastIntervalOfItsData) {
    wavResetWriter(writer_);
    ASSERT_EQ(wavCreateFile(path_, writer_), 1);
    const test::Bytes samples = test::counting(4 * 1000);
    uint32_t written = 0;
    for (int i = 0; i < 40; ++i) {
        ASSERT_EQ(wavWrite(writer_, samples.data(), static_cast<uint32_t>(samples.size())), 1);
        written += static_cast<uint32_t>(samples.size());
    }
    ASSERT_GT(written, 3 * kHeaderRefreshBytes);

    const test::Bytes bytes = test::readBytes(path_);
    const uint32_t declared = test::loadLe32At(bytes, 40);
    EXPECT_GE(declared + kHeaderRefreshBytes, written);
    EXPECT_LE(44 + declared, bytes.size());
    EXPECT_EQ(test::loadLe32At(bytes, 4), declared + 36);
    uint32_t length = 0;
    ASSERT_EQ(wavGetLength(path_, length), 1);
    EXPECT_EQ(length, declared);
    EXPECT_EQ(test::run("sox --i -s '" + path_ + "' | grep -qx " + std::to_string(declared / 4)),
              0);

    wavResetWriter(writer_);  // drops the file without finishing it
    EXPECT_EQ(test::loadLe32At(test::readBytes(path_), 40), declared);
}

TEST_F(WavWriterTest, WithoutRefreshAFileNeverClosedKeepsZeroSizes) {
    wavResetWriter(writer_);
    writer_.refreshBytes = 0;
    ASSERT_EQ(wavCreateFile(path_, writer_), 1);
    const test::Bytes samples = test::counting(2 * kHeaderRefreshBytes);
    ASSERT_EQ(wavWrite(writer_, samples.data(), static_cast<uint32_t>(samples.size())), 1);
    wavResetWriter(writer_);
    const test::Bytes bytes = test::readBytes(path_);
    ASSERT_EQ(bytes.size(), 44 + samples.size());
    EXPECT_EQ(test::loadLe32At(bytes, 4), 0u);
    EXPECT_EQ(test::loadLe32At(bytes, 40), 0u);
}

// A pipe stands in for a disk that refuses to flush: the close, which waits
// for the flush already asked for, reports the take as not finished.
TEST_F(WavWriterTest, AFailedFlushToTheDiskFailsTheTake) {
    wavResetWriter(writer_);
    ASSERT_EQ(wavCreateFile(path_, writer_), 1);
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    writer_.flusher = std::make_unique<BackgroundFlusher>(pipe[1]);
    const test::Bytes samples = test::counting(kHeaderRefreshBytes);
    // The write may or may not see the failure yet: the flush runs meanwhile.
    wavWrite(writer_, samples.data(), kHeaderRefreshBytes);
    EXPECT_EQ(wavCloseFile(writer_), 0);
    ::close(pipe[0]);
    ::close(pipe[1]);
}

TEST_F(WavWriterTest, FailuresAreReportedNotThrown) {
    wavResetWriter(writer_);
    EXPECT_EQ(wavCreateFile((dir_ / "no" / "dir.wav").string(), writer_), 0);
    EXPECT_EQ(writer_.file, nullptr);
    const uint8_t byte = 0;
    EXPECT_EQ(wavWrite(writer_, &byte, 1), 0);
    EXPECT_EQ(wavCloseFile(writer_), 0);
}

}  // namespace
}  // namespace tunebox
