// MP3 files and non-native WAV files opened as accompaniments and read as
// native PCM through the converter, with test material made by sox and lame.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "core/diagnostic_log.h"
#include "mp3/decoder/mpeg_audio_decoder.h"
#include "mp3/mp3_open.h"
#include "support/log_records.h"
#include "support/mpg123_reference.h"
#include "support/signal_measure.h"
#include "support/source_reading.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

constexpr uint32_t kPlayerBlock = 91728;

class Mp3SourceTest : public ::testing::Test {
  protected:
    void SetUp() override { setenv("TUNEBOX_CONFIG_DIR", dir_.path().c_str(), 1); }
    void TearDown() override { unsetenv("TUNEBOX_CONFIG_DIR"); }

    // A two-second sine of `hertz` at the given rate and channel count.
    std::string makeWav(const std::string& name, int rate, int channels,
                        const std::string& encoding, int hertz = 1000) {
        const std::string path = (dir_ / name).string();
        test::runTool("sox -n -r " + std::to_string(rate) + " -c " + std::to_string(channels) +
                      " " + encoding + " " + path + " synth 2 sine " + std::to_string(hertz) +
                      " vol 0.5");
        return path;
    }

    std::string makeMp3(const std::string& name, int rate, int channels,
                        const std::string& options) {
        const std::string wav = makeWav(name + ".wav", rate, channels, "-b 16");
        const std::string path = (dir_ / name).string();
        test::runTool("lame --quiet " + options + " " + wav + " " + path);
        return path;
    }

    test::LogDirectory log_;
    const test::TempDir& dir_ = log_.dir();
};

using test::open;
using test::Opened;
using test::readAll;

TEST_F(Mp3SourceTest, SystemCodecPathMatchesLibmpg123AndEveryRequestSizeGivesTheSameStream) {
    const std::string path = makeMp3("cbr.mp3", 44100, 2, "-b 128");
    Opened opened;
    ASSERT_TRUE(open(path, opened));
    EXPECT_EQ(opened.source.conversionFlag, 1u);
    EXPECT_EQ(opened.source.conversionStages, 1u);
    EXPECT_EQ(opened.source.ownDecoderFlag, 0u);
    const auto big = readAll(opened, kPlayerBlock);

    EXPECT_EQ(test::toSamples(big), test::decodeFileWithMpg123(path));

    for (const uint32_t request : {1u, 7u, 4096u, 300000u}) {
        Opened again;
        ASSERT_TRUE(open(path, again));
        EXPECT_EQ(readAll(again, request), big) << "request " << request;
    }
}

TEST_F(Mp3SourceTest, OtherRatesAndFormatsArriveAsNativePcmOfTheRightLengthAndPitch) {
    const std::vector<std::string> paths{
        makeMp3("mpeg2-mono.mp3", 22050, 1, "-b 64"), makeMp3("mpeg2-24k.mp3", 24000, 2, "-b 64"),
        makeMp3("mpeg2-16k.mp3", 16000, 1, "-b 32"),  makeMp3("mpeg25-11k.mp3", 11025, 2, "-b 32"),
        makeMp3("mpeg25-8k.mp3", 8000, 1, "-b 16"),   makeMp3("joint.mp3", 44100, 2, "-m j -V 4"),
        makeWav("narrow.wav", 22050, 1, "-b 8"),      makeWav("fast.wav", 48000, 2, "-b 16"),
        makeWav("alaw.wav", 8000, 1, "-e a-law"),     makeWav("ulaw.wav", 8000, 2, "-e u-law"),
    };
    for (const auto& path : paths) {
        Opened opened;
        ASSERT_TRUE(open(path, opened)) << path;
        const auto pcm = readAll(opened, kPlayerBlock);
        EXPECT_NEAR(static_cast<double>(pcm.size()), 2.0 * 176400, kPlayerBlock) << path;
        // The encoder's delay and last frame make a file a little longer.
        EXPECT_NEAR(static_cast<double>(opened.length), 2.0 * 176400, 0.2 * 176400) << path;
        const auto samples = test::toSamples(pcm);
        EXPECT_NEAR(test::toneFrequency(samples, 2, 0, 44100), 1000.0, 5.0) << path;
        EXPECT_NEAR(test::toneFrequency(samples, 2, 1, 44100), 1000.0, 5.0) << path;
    }
}

TEST_F(Mp3SourceTest, LengthComesFromTheXingCountOrTheBitRate) {
    const std::string plain = makeMp3("plain.mp3", 44100, 2, "-t -b 128");
    Opened opened;
    ASSERT_TRUE(open(plain, opened));
    // Without a count the frames are counted: whole frames of 1152 samples,
    // about as long as the bytes at 128 kbit/s.
    const auto size = static_cast<double>(test::readBytes(plain).size());
    EXPECT_EQ(opened.length % 4608, 0u);
    EXPECT_NEAR(opened.length, size * (1411.2 / 128), 4608);

    const std::string vbr = makeMp3("vbr.mp3", 44100, 2, "-V 2");
    Opened tagged;
    ASSERT_TRUE(open(vbr, tagged));
    // lame counts its frames in the tag; 2 s of audio plus the encoder's delay.
    EXPECT_EQ(tagged.length % 4, 0u);
    EXPECT_NEAR(tagged.length, 2.0 * 176400, 3 * 4608);
}

TEST_F(Mp3SourceTest, TagsAreReadAndStripped) {
    const std::string wav = makeWav("tagged.wav", 44100, 2, "-b 16");
    const std::string v2 = (dir_ / "v2.mp3").string();
    test::runTool(
        "lame --quiet -b 128 --id3v2-only --id3v2-utf16 --tt 'うた' --ta Singer --tl Album "
        "--ty 2003 --tn 5 --tg Rock " +
        wav + " " + v2);
    Opened opened;
    ASSERT_TRUE(open(v2, opened));
    EXPECT_EQ(opened.source.id3v2Flag, 1u);
    EXPECT_EQ(opened.source.id3Tag.title, "うた");
    EXPECT_EQ(opened.source.id3Tag.artist, "Singer");
    EXPECT_EQ(opened.source.id3Tag.album, "Album");
    EXPECT_EQ(opened.source.id3Tag.genre, "Rock");
    EXPECT_EQ(opened.source.id3Tag.year, 2003);
    EXPECT_EQ(opened.source.id3Tag.track, 5);

    const std::string v1 = (dir_ / "v1.mp3").string();
    test::runTool("lame --quiet -b 128 --id3v1-only --tt Title " + wav + " " + v1);
    Opened old;
    ASSERT_TRUE(open(v1, old));
    EXPECT_EQ(old.source.id3v1Flag, 1u);
    EXPECT_EQ(old.source.sourceBytesBound, test::readBytes(v1).size() - 128);
    EXPECT_EQ(std::string(old.source.id3v1.begin() + 3, old.source.id3v1.begin() + 8), "Title");
}

TEST_F(Mp3SourceTest, SeekByTenThousandthsOfTheBound) {
    const std::string path = (dir_ / "bound.bin").string();
    std::FILE* file = std::fopen(path.c_str(), "wb");
    const std::vector<char> zeros(1000001, 0);
    std::fwrite(zeros.data(), 1, zeros.size(), file);
    std::fclose(file);
    auto riff = RiffFile::openForRead(path);
    ASSERT_NE(riff, nullptr);
    AudioSource source;
    source.sourceBytesBound = 1000001;
    source.acm.oldbyte = 77;
    ASSERT_EQ(mp3SeekPermyriad(*riff, 5000, source), 1);
    EXPECT_EQ(riff->seek(0, SEEK_CUR), 500001);
    EXPECT_EQ(source.acm.oldbyte, 0u);
}

TEST_F(Mp3SourceTest, BuiltinPathGivesEveryFrameTheDecoderItselfGives) {
    const std::string path = makeMp3("builtin.mp3", 44100, 2, "-t -b 128");
    Opened opened;
    ASSERT_TRUE(open(path, opened, 1));
    EXPECT_EQ(opened.source.ownDecoderFlag, 1u);
    opened.source.conversionStages = 1;
    const auto fed = test::toSamples(readAll(opened, kPlayerBlock));

    MpegAudioDecoder decoder;
    std::vector<int16_t> direct;
    decoder.decodeStream(test::readBytes(path), direct);
    EXPECT_EQ(fed, direct);
}

void writeBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
}

TEST_F(Mp3SourceTest, LengthOfAMillionAudioBytesCountsTheirFrames) {
    // MPEG-1 Layer III, 128 kbit/s, 44.1 kHz: 417-byte frames, 34 of them
    // padded to 418, a million bytes in all.
    std::vector<uint8_t> bytes;
    for (int frame = 0; frame < 2398; ++frame) {
        const bool padded = frame >= 2398 - 34;
        const std::size_t start = bytes.size();
        bytes.resize(start + (padded ? 418 : 417), 0);
        bytes[start] = 0xFF;
        bytes[start + 1] = 0xFB;
        bytes[start + 2] = padded ? 0x92 : 0x90;
    }
    ASSERT_EQ(bytes.size(), 1000000u);
    const std::string path = (dir_ / "million.mp3").string();
    writeBytes(path, bytes);
    Opened opened;
    ASSERT_TRUE(open(path, opened));
    EXPECT_EQ(opened.length, 2398u * 4608);  // 62.6 s
    EXPECT_EQ(opened.source.sourceBytesBound, 1000000u);
}

TEST_F(Mp3SourceTest, DamagedFilesReadWithoutHarm) {
    const auto good = test::readBytes(makeMp3("good.mp3", 44100, 2, "-b 128"));
    const std::size_t half = good.size() / 2;
    std::vector<uint8_t> garbage(good.begin(), good.begin() + half);
    for (int i = 0; i < 3000; ++i) {
        garbage.push_back(static_cast<uint8_t>(i * 37 + 11));
    }
    garbage.insert(garbage.end(), good.begin() + half, good.end());
    const std::vector<std::pair<std::string, std::vector<uint8_t>>> cases{
        {"cut.mp3", {good.begin(), good.begin() + half + 101}},
        {"garbage.mp3", garbage},
    };
    for (const auto& [name, bytes] : cases) {
        for (const uint32_t builtin : {0u, 1u}) {
            SCOPED_TRACE(name + (builtin == 1 ? " built-in" : " system"));
            const std::string path = (dir_ / name).string();
            writeBytes(path, bytes);
            Opened opened;
            ASSERT_TRUE(open(path, opened, builtin));
            const auto pcm = readAll(opened, kPlayerBlock);
            // Whatever was intact still comes out.
            EXPECT_GT(pcm.size(), 176400u / 2);
        }
    }
}

// At 44.1 kHz each MPEG-1 frame plays 4,608 native bytes: 932,067 frames are
// the most a 32-bit length holds.
TEST_F(Mp3SourceTest, AFrameCountBeyondTheLongestLengthIsRefused) {
    const auto good = test::readBytes(makeMp3("counted.mp3", 44100, 2, "-b 128"));
    const auto withFrames = [&](uint32_t frames) {
        std::vector<uint8_t> bytes = good;
        const std::string_view infoName = "Info";
        const auto info = std::search(bytes.begin(), bytes.end(), infoName.begin(), infoName.end());
        EXPECT_NE(info, bytes.end());
        for (int i = 0; i < 4; ++i) {
            info[8 + i] = static_cast<uint8_t>(frames >> (24 - 8 * i));
        }
        // Without the encoder's name its delay and padding are not trusted,
        // so the length is the whole frames' playing time.
        const std::string_view encoderName = "LAME";
        const auto encoder = std::search(info, bytes.end(), encoderName.begin(), encoderName.end());
        EXPECT_NE(encoder, bytes.end());
        *encoder = 'X';
        const std::string path = (dir_ / ("frames-" + std::to_string(frames) + ".mp3")).string();
        writeBytes(path, bytes);
        return path;
    };
    Opened longest;
    ASSERT_TRUE(open(withFrames(932067), longest));
    EXPECT_EQ(longest.length, 932067u * 4608);

    const std::pair<uint32_t, std::string> refused[] = {
        {932068, "lasts 6:45:48, longer than the 6:45:47 a source may last"},
        {0xFFFFFFFF, "lasts 31165:17:45, longer than the 6:45:47 a source may last"},
    };
    for (const auto& [frames, reason] : refused) {
        Opened opened;
        EXPECT_FALSE(open(withFrames(frames), opened));
        EXPECT_EQ(opened.file, nullptr);
        EXPECT_EQ(opened.source.refusal, reason);
    }
}

TEST_F(Mp3SourceTest, FilesWithoutFramesFailWithTheirLogLine) {
    logSetSwitch(1);
    const std::string zeros = (dir_ / "zeros.mp3").string();
    std::FILE* file = std::fopen(zeros.c_str(), "wb");
    const std::vector<char> bytes(200000, 0);
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
    Opened opened;
    EXPECT_FALSE(open(zeros, opened));
    EXPECT_EQ(opened.file, nullptr);
    const auto records = log_.messages();
    ASSERT_FALSE(records.empty());
    EXPECT_EQ(records.back(), "★mp3GetHeader失敗:mp3OpenSeekMp3File");
    EXPECT_FALSE(open((dir_ / "missing.mp3").string(), opened));
    logSetSwitch(0);
}

}  // namespace
}  // namespace tunebox
