// Accompaniments whose declared format or length cannot be real are refused
// at once with the reason, and never handed to the MP3 opener.

#include <gtest/gtest.h>

#include "playback/source_opener.h"
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
    bool open(const std::string& path) {
        SourceOpening opening = wavOpenSource(path, SourceOptions{});
        source_ = std::move(opening.source);
        refusal_ = std::move(opening.refusal);
        return source_ != nullptr;
    }
    // A few real MPEG frames, so that a file falling through to the MP3
    // opener would open.
    Bytes mpegFrames() {
        return test::readBytes(
            test::synthesiseMp3(dir_ / "tone.mp3", 44100, 2, "synth 0.1 sine 440", "-b 128"));
    }
    static Bytes wave(const Bytes& format, const Bytes& data) {
        return test::riff("WAVE", test::chunk("fmt ", format) + test::chunk("data", data));
    }

    test::TempDir dir_;
    int files_ = 0;
    std::unique_ptr<AudioSource> source_;
    std::string refusal_;
};

TEST_F(SourceRefusalTest, ImplausibleFormatsAreRefusedAndNotTriedAsMp3) {
    const Bytes frames = mpegFrames();
    WaveFormat unknownTag = kNativeFormat;
    unknownTag.formatTag = 2;
    ASSERT_TRUE(open(store(wave(test::formatPayload(unknownTag, 16), frames))));
    EXPECT_EQ(source_->format().formatTag, kFormatMpegLayer3);

    const WaveFormat oneHertz{kFormatPcm, 2, 1, 4, 4, 16, 0};
    const std::string path = store(wave(test::formatPayload(oneHertz, 16), frames));
    EXPECT_FALSE(open(path));
    EXPECT_EQ(refusal_, "sample rate 1 Hz is outside 1000-768000 Hz");
    RiffHandle file;
    uint32_t length = 0;
    ConversionState state;
    EXPECT_EQ(wavExamineWaveFile(path, file, length, state), WavOpenStatus::refused);
    EXPECT_EQ(file, nullptr);
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
    ASSERT_TRUE(open(store(wave(extensible(kNativeFormat, 1), Bytes(4000)))));
    EXPECT_FALSE(source_->describe().converted);
    EXPECT_TRUE(sameFormat(source_->format(), kNativeFormat));
    EXPECT_EQ(source_->length(), 4000u);

    ASSERT_TRUE(open(store(wave(extensible(test::kHalfRateStereo, 1), Bytes(88200)))));
    EXPECT_TRUE(source_->describe().converted);
    EXPECT_EQ(source_->length(), 176400u);

    // Any other sub-format (here A-law) stays unknown to the WAVE reader.
    const std::string aLaw = store(wave(extensible(kNativeFormat, 6), Bytes(4000)));
    RiffHandle file;
    uint32_t length = 0;
    ConversionState state;
    EXPECT_EQ(wavExamineWaveFile(aLaw, file, length, state), WavOpenStatus::unsupported);
}

// The 32-bit length holds 4,294,967,295 native bytes; at 22,050 Hz stereo
// each source byte is two native bytes.
TEST_F(SourceRefusalTest, TheLongestConvertedLengthOpensAndOneFrameMoreIsRefused) {
    const auto path = dir_ / "long.wav";
    test::writeSparseWave(path, test::kHalfRateStereo, 2147483644);
    ASSERT_TRUE(open(path.string()));
    EXPECT_EQ(source_->length(), 4294967288u);

    test::writeSparseWave(path, test::kHalfRateStereo, 2147483648);
    EXPECT_FALSE(open(path.string()));
    EXPECT_EQ(refusal_, "lasts 6:45:48, longer than the 6:45:47 a source may last");
}

TEST_F(SourceRefusalTest, SixHoursReadToTheEnd) {
    const auto path = dir_ / "hours.wav";
    test::writeSparseWave(path, test::kHalfRateStereo, 88200u * 6 * 3600);
    ASSERT_TRUE(open(path.string()));
    const uint32_t length = source_->length();
    EXPECT_EQ(length, 176400u * 6 * 3600);
    ASSERT_TRUE(source_->seek(length - 176400, 9999));
    std::vector<uint8_t> block(kEngineBlockBytes);
    const SourceBlock read = source_->read(block.data(), kEngineBlockBytes);
    EXPECT_FALSE(read.failed);
    EXPECT_EQ(read.count, kEngineBlockBytes);
}

}  // namespace
}  // namespace tunebox
