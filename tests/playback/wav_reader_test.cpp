#include "playback/wav_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "playback/source_opener.h"
#include "support/riff_bytes.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

using test::Bytes;
using test::chunk;
using test::formatPayload;
using test::nativeWave;
using test::riff;
using test::operator+;

class WavReaderTest : public ::testing::Test {
  protected:
    std::string store(const Bytes& bytes) {
        const std::string path = (dir_ / ("f" + std::to_string(++files_) + ".wav")).string();
        test::writeFile(path, bytes);
        return path;
    }
    WavOpenStatus examine(const std::string& path) {
        return wavExamineWaveFile(path, file_, length_, source_);
    }

    test::TempDir dir_;
    int files_ = 0;
    RiffHandle file_;
    uint32_t length_ = 99;
    ConversionState source_;
};

// The offset of the first data byte, found by scanning for the chunk id.
std::size_t dataStart(const Bytes& bytes) {
    const std::array<uint8_t, 4> id{'d', 'a', 't', 'a'};
    return std::search(bytes.begin(), bytes.end(), id.begin(), id.end()) - bytes.begin() + 8;
}

TEST_F(WavReaderTest, NativeSoxFileIsReadDirectlyFromItsFirstDataByte) {
    const std::string path = test::synthesise(dir_ / "native.wav", 44100, 2, "synth 1 sine 440");
    const Bytes bytes = test::readBytes(path);
    const std::size_t start = dataStart(bytes);

    ASSERT_EQ(wavOpenWaveFile(path, file_, length_, source_), 1);
    EXPECT_EQ(length_, test::loadLe32At(bytes, start - 4));
    EXPECT_EQ(length_, 176400u);
    EXPECT_FALSE(isConverting(source_));
    EXPECT_TRUE(sameFormat(source_.outputFormat, kNativeFormat));
    EXPECT_EQ(file_->seek(0, SEEK_CUR), static_cast<int64_t>(start));
}

TEST_F(WavReaderTest, FormatChunkMayHoldOneToThirtyTwoBytes) {
    for (const std::size_t size : {16u, 18u, 20u, 32u}) {
        SCOPED_TRACE(size);
        ASSERT_EQ(examine(store(nativeWave(test::counting(8), size))), WavOpenStatus::opened);
        EXPECT_EQ(length_, 8u);
    }
    EXPECT_EQ(examine(store(nativeWave(test::counting(8), 0))), WavOpenStatus::damaged);
    EXPECT_EQ(examine(store(nativeWave(test::counting(8), 33))), WavOpenStatus::unsupported);
    EXPECT_EQ(examine(store(nativeWave(test::counting(8), 40))), WavOpenStatus::unsupported);
}

TEST_F(WavReaderTest, DamagedWaveFilesAreRefusedAndClosed) {
    const Bytes format = chunk("fmt ", formatPayload(kNativeFormat, 16));
    const Bytes whole = nativeWave(test::counting(64));
    struct Case {
        const char* what;
        Bytes bytes;
    };
    const Case cases[] = {
        {"no data chunk", riff("WAVE", format + chunk("LIST", Bytes(8)))},
        {"no format chunk", riff("WAVE", chunk("data", Bytes(8)))},
        {"data chunk ending early", Bytes(whole.begin(), whole.end() - 10)},
        {"data size beyond the file", riff("WAVE", format + chunk("data", Bytes(4), 0x7FFFFFFF))},
        {"format chunk beyond the file", riff("WAVE", chunk("fmt ", Bytes(4), 5000))},
        {"cut inside the header", Bytes(whole.begin(), whole.begin() + 20)},
    };
    for (const Case& item : cases) {
        SCOPED_TRACE(item.what);
        EXPECT_EQ(examine(store(item.bytes)), WavOpenStatus::damaged);
        EXPECT_EQ(file_, nullptr);
        EXPECT_EQ(length_, 0u);
    }
}

TEST_F(WavReaderTest, FilesOfOtherKindsAreNotWave) {
    Bytes id3{'I', 'D', '3', 4, 0, 0, 0, 0, 1, 0};
    id3.resize(600, 0x55);
    const Bytes cases[] = {
        {}, {'h', 'e', 'l', 'l', 'o', '\n'}, id3, riff("AVI ", chunk("data", Bytes(8)))};
    for (const Bytes& bytes : cases) {
        EXPECT_EQ(examine(store(bytes)), WavOpenStatus::notWave);
        EXPECT_EQ(file_, nullptr);
    }
}

TEST_F(WavReaderTest, UnknownTagLeavesTheFileForTheNextOpenerWhichRefusesIt) {
    WaveFormat adpcm = kNativeFormat;
    adpcm.formatTag = 2;
    const std::string path =
        store(riff("WAVE", chunk("fmt ", formatPayload(adpcm, 20)) + chunk("data", Bytes(8))));
    EXPECT_EQ(wavOpenWaveFile(path, file_, length_, source_), 0);
    EXPECT_NE(file_, nullptr);
    EXPECT_EQ(source_.outputFormat.formatTag, 2);

    const SourceOpening opening = wavOpenSource(path, SourceOptions{});
    EXPECT_EQ(opening.source, nullptr);
    EXPECT_EQ(opening.refusal, "");
}

TEST_F(WavReaderTest, OpenerReadsNativeDataDirectlyAndNeverIntoTheChunkAfterIt) {
    const Bytes data = test::counting(40);
    const std::string path =
        store(riff("WAVE", chunk("fmt ", formatPayload(kNativeFormat, 16)) + chunk("data", data) +
                               chunk("LIST", Bytes(8, 0x77))));
    // Native data is never converted, whichever decoder would come first.
    const SourceOpening opening = wavOpenSource(path, SourceOptions{true});
    ASSERT_NE(opening.source, nullptr);
    EXPECT_FALSE(opening.source->describe().converted);
    EXPECT_EQ(opening.source->length(), 40u);
    std::array<uint8_t, 64> block{};
    const SourceBlock read = opening.source->read(block.data(), block.size());
    EXPECT_EQ(read.count, 40u);
    EXPECT_TRUE(read.ended);
    EXPECT_FALSE(read.failed);
    EXPECT_TRUE(std::equal(data.begin(), data.end(), block.begin()));
    // Past the end, reads find nothing and keep saying so.
    const SourceBlock after = opening.source->read(block.data(), block.size());
    EXPECT_EQ(after.count, 0u);
    EXPECT_TRUE(after.ended);
}

TEST_F(WavReaderTest, DataHeadReadsAtMostTheChunkAndReturnsToWhereItStarted) {
    auto file = RiffFile::openForRead(store(nativeWave(test::counting(40))));
    ASSERT_EQ(file->seek(12, SEEK_SET), 12);
    std::array<uint8_t, 100> head{};
    int64_t size = 100;
    ASSERT_EQ(wavReadDataHead(*file, head.data(), size), 1);
    EXPECT_EQ(size, 40);
    EXPECT_EQ(head[39], 39);
    EXPECT_EQ(file->seek(0, SEEK_CUR), 12);

    size = 10;
    ASSERT_EQ(wavReadDataHead(*file, head.data(), size), 1);
    EXPECT_EQ(size, 10);

    auto empty = RiffFile::openForRead(store(nativeWave({})));
    ASSERT_EQ(empty->seek(12, SEEK_SET), 12);
    size = 10;
    EXPECT_EQ(wavReadDataHead(*empty, head.data(), size), 0);
    auto noData = RiffFile::openForRead(store(riff("WAVE", chunk("fmt ", Bytes(16)))));
    size = 10;
    EXPECT_EQ(wavReadDataHead(*noData, head.data(), size), 0);
}

}  // namespace
}  // namespace tunebox
