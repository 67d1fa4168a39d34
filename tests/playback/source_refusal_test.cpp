// Accompaniments whose declared format or length cannot be real are refused
// at once with the reason, and never handed to the MP3 opener.

#include <gtest/gtest.h>

#include "playback/source_reader.h"
#include "playback/wav_reader.h"
#include "playback/wave_extensible.h"
#include "support/riff_bytes.h"
#include "support/sparse_wave.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

using test::Bytes;
using test::operator+;

class SourceRefusalTest : public ::testing::Test {
  protected:
    std::string store(const Bytes& bytes) {
        const std::string path = (dir_ / ("f" + std::to_string(++files_) + ".wav")).string();
        test::writeFile(path, bytes);
        return path;
    }
    int open(const std::string& path) {
        wavCloseSource(file_, source_);
        return wavOpenSource(path, file_, length_, source_, 0);
    }
    // A few real MPEG frames, so that a file falling through to the MP3
    // opener would open.
    Bytes mpegFrames() {
        return test::readFile(
            test::synthesiseMp3(dir_ / "tone.mp3", 44100, 2, "synth 0.1 sine 440", "-b 128"));
    }
    static Bytes wave(const Bytes& format, const Bytes& data) {
        return test::riff("WAVE", test::chunk("fmt ", format) + test::chunk("data", data));
    }

    test::TempDir dir_;
    int files_ = 0;
    RiffHandle file_;
    uint32_t length_ = 0;
    AudioSource source_;
};

TEST_F(SourceRefusalTest, ImplausibleFormatsAreRefusedAndNotTriedAsMp3) {
    const Bytes frames = mpegFrames();
    WaveFormat unknownTag = kNativeFormat;
    unknownTag.formatTag = 2;
    ASSERT_EQ(open(store(wave(test::formatPayload(unknownTag, 16), frames))), 1);
    EXPECT_EQ(source_.outputFormat.formatTag, kFormatMpegLayer3);

    const WaveFormat oneHertz{kFormatPcm, 2, 1, 4, 4, 16, 0};
    const std::string path = store(wave(test::formatPayload(oneHertz, 16), frames));
    EXPECT_EQ(open(path), 0);
    EXPECT_EQ(file_, nullptr);
    EXPECT_EQ(source_.refusal, "sample rate 1 Hz is outside 1000-768000 Hz");
    EXPECT_EQ(wavExamineWaveFile(path, file_, length_, source_), WavOpenStatus::refused);
}

TEST_F(SourceRefusalTest, ExtensiblePlainPcmReadsAsTagOne) {
    const auto extensible = [](const WaveFormat& format, uint8_t subFormat) {
        WaveFormat record = format;
        record.formatTag = kFormatExtensible;
        record.extraSize = 22;
        Bytes bytes = test::formatPayload(record, 18);
        test::appendLe(bytes, format.bitsPerSample, 2);
        test::appendLe(bytes, 3, 4);  // front left and right
        bytes =
            bytes + Bytes{subFormat, 0, 0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
        return bytes;
    };
    ASSERT_EQ(open(store(wave(extensible(kNativeFormat, 1), Bytes(4000)))), 1);
    EXPECT_EQ(source_.conversionFlag, 0u);
    EXPECT_TRUE(sameFormat(source_.outputFormat, kNativeFormat));
    EXPECT_EQ(length_, 4000u);

    ASSERT_EQ(open(store(wave(extensible(test::kHalfRateStereo, 1), Bytes(88200)))), 1);
    EXPECT_EQ(source_.conversionFlag, 1u);
    EXPECT_EQ(length_, 176400u);

    // Any other sub-format (here A-law) stays unknown to the WAVE reader.
    const std::string aLaw = store(wave(extensible(kNativeFormat, 6), Bytes(4000)));
    EXPECT_EQ(wavExamineWaveFile(aLaw, file_, length_, source_), WavOpenStatus::unsupported);
}

// The 32-bit length holds 4,294,967,295 native bytes; at 22,050 Hz stereo
// each source byte is two native bytes.
TEST_F(SourceRefusalTest, TheLongestConvertedLengthOpensAndOneFrameMoreIsRefused) {
    const auto path = dir_ / "long.wav";
    test::writeSparseWave(path, test::kHalfRateStereo, 2147483644);
    ASSERT_EQ(open(path.string()), 1);
    EXPECT_EQ(length_, 4294967288u);

    test::writeSparseWave(path, test::kHalfRateStereo, 2147483648);
    EXPECT_EQ(open(path.string()), 0);
    EXPECT_EQ(source_.refusal, "lasts 6:45:48, longer than the 6:45:47 a source may last");
}

TEST_F(SourceRefusalTest, SevenHoursAreRefusedAndSixHoursReadToTheEnd) {
    const auto path = dir_ / "hours.wav";
    test::writeSparseWave(path, test::kHalfRateStereo, 88200u * 7 * 3600);
    EXPECT_EQ(open(path.string()), 0);
    EXPECT_EQ(source_.refusal, "lasts 7:00:00, longer than the 6:45:47 a source may last");

    test::writeSparseWave(path, test::kHalfRateStereo, 88200u * 6 * 3600);
    ASSERT_EQ(open(path.string()), 1);
    EXPECT_EQ(length_, 176400u * 6 * 3600);
    ASSERT_EQ(sourceSeek(*file_, length_ - 176400, 9999, source_), 1);
    std::vector<uint8_t> block(kEngineBlockBytes);
    uint32_t count = 0;
    uint32_t end = 0;
    EXPECT_EQ(sourceRead(*file_, block.data(), kEngineBlockBytes, count, end, source_), 1);
    EXPECT_EQ(count, kEngineBlockBytes);
}

}  // namespace
}  // namespace tunebox
