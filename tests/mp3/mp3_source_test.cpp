// MP3 files and non-native WAV files opened as accompaniments and read as
// native PCM through the converter, with test material made by sox and lame.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/diagnostic_log.h"
#include "mp3/conversion_state.h"
#include "mp3/mp3_open.h"
#include "support/log_records.h"
#include "support/mpg123_reference.h"
#include "support/riff_bytes.h"
#include "support/scoped_environment.h"
#include "support/source_reading.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

constexpr uint32_t kPlayerBlock = 91728;
constexpr const char* kTone = "synth 2 sine 1000 vol 0.5";

class Mp3SourceTest : public ::testing::Test {
  protected:
    // Two seconds of a 1 kHz sine.
    std::string makeMp3(const std::string& name, const std::string& options) {
        return test::synthesiseMp3(dir_ / name, 44100, 2, kTone, options);
    }

    test::LogDirectory log_;
    const test::TempDir& dir_ = log_.dir();
    test::ScopedEnvironment config_{"TUNEBOX_CONFIG_DIR", dir_.path().c_str()};
};

using test::open;
using test::Opened;
using test::readAll;

TEST_F(Mp3SourceTest, SystemCodecPathMatchesLibmpg123AndEveryRequestSizeGivesTheSameStream) {
    const std::string path = makeMp3("cbr.mp3", "-b 128");
    Opened opened;
    ASSERT_TRUE(open(path, opened));
    const SourceDescription description = opened.description();
    EXPECT_TRUE(description.converted);
    EXPECT_FALSE(description.resampled);
    EXPECT_FALSE(description.builtinDecoder);
    const auto big = readAll(opened, kPlayerBlock);

    EXPECT_EQ(test::toSamples(big), test::decodeFileWithMpg123(path));

    for (const uint32_t request : {1u, 7u, 4096u, 300000u}) {
        Opened again;
        ASSERT_TRUE(open(path, again));
        EXPECT_EQ(readAll(again, request), big) << "request " << request;
    }
}

TEST_F(Mp3SourceTest, TagsAreReadAndStripped) {
    const std::string wav = test::synthesise(dir_ / "tagged.wav", 44100, 2, kTone);
    const std::string v2 = (dir_ / "v2.mp3").string();
    test::runTool(
        "lame --quiet -b 128 --id3v2-only --id3v2-utf16 --tt 'うた' --ta Singer --tl Album "
        "--ty 2003 --tn 5 --tg Rock " +
        wav + " " + v2);
    Opened opened;
    ASSERT_TRUE(open(v2, opened));
    const std::optional<Id3Tag> tag = opened.description().tags;
    ASSERT_TRUE(tag);
    // Each frame's reading is the tag reader's test; lame's tag comes whole.
    EXPECT_EQ(tag->title, "うた");
    EXPECT_EQ(tag->genre, "Rock");
    EXPECT_EQ(tag->track, 5);

    const std::string v1 = (dir_ / "v1.mp3").string();
    test::runTool("lame --quiet -b 128 --id3v1-only --tt Title " + wav + " " + v1);
    ConversionState state;
    RiffHandle file;
    uint32_t length = 0;
    ASSERT_EQ(mp3OpenFile(v1, file, length, state), 1);
    EXPECT_EQ(state.id3v1Flag, 1u);
    EXPECT_EQ(state.sourceBytesBound, test::readBytes(v1).size() - 128);
    EXPECT_EQ(std::string(state.id3v1.begin() + 3, state.id3v1.begin() + 8), "Title");
    mp3ReleaseSource(state);
}

TEST_F(Mp3SourceTest, SeekByTenThousandthsOfTheBound) {
    const std::string path = (dir_ / "bound.bin").string();
    test::writeFile(path, test::Bytes(1000001));
    auto riff = RiffFile::openForRead(path);
    ASSERT_NE(riff, nullptr);
    ConversionState source;
    source.sourceBytesBound = 1000001;
    source.acm.oldbyte = 77;
    ASSERT_EQ(mp3SeekPermyriad(*riff, 5000, source), 1);
    EXPECT_EQ(riff->seek(0, SEEK_CUR), 500001);
    EXPECT_EQ(source.acm.oldbyte, 0u);
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
    test::writeFile(path, bytes);
    ConversionState state;
    RiffHandle file;
    uint32_t length = 0;
    ASSERT_EQ(mp3OpenFile(path, file, length, state), 1);
    EXPECT_EQ(length, 2398u * 4608);  // 62.6 s
    EXPECT_EQ(state.sourceBytesBound, 1000000u);
    mp3ReleaseSource(state);
}

TEST_F(Mp3SourceTest, DamagedFilesReadWithoutHarm) {
    const auto good = test::readBytes(makeMp3("good.mp3", "-b 128"));
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
            test::writeFile(path, bytes);
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
    const auto good = test::readBytes(makeMp3("counted.mp3", "-b 128"));
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
        test::writeFile(path, bytes);
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
        EXPECT_EQ(opened.source, nullptr);
        EXPECT_EQ(opened.refusal, reason);
    }
}

TEST_F(Mp3SourceTest, FilesWithoutFramesFailWithTheirLogLine) {
    logSetSwitch(1);
    const std::string zeros = (dir_ / "zeros.mp3").string();
    test::writeFile(zeros, test::Bytes(200000));
    Opened opened;
    EXPECT_FALSE(open(zeros, opened));
    EXPECT_EQ(opened.source, nullptr);
    const auto records = log_.messages();
    ASSERT_FALSE(records.empty());
    EXPECT_EQ(records.back(), "★mp3GetHeader失敗:mp3OpenSeekMp3File");
    EXPECT_FALSE(open((dir_ / "missing.mp3").string(), opened));
    logSetSwitch(0);
}

}  // namespace
}  // namespace tunebox
