#include "platform/riff_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>

#include "support/riff_bytes.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

using test::Bytes;
using test::chunk;
using test::riff;
using test::TempDir;
using test::operator+;

class RiffFileTest : public ::testing::Test {
  protected:
    RiffHandle openBytes(const Bytes& bytes) {
        test::writeFile(dir_ / "file", bytes);
        return RiffFile::openForRead((dir_ / "file").string());
    }
    TempDir dir_;
};

TEST_F(RiffFileTest, CreatedChunksGetTheirSizesAndPadAndCanBeWalkedBack) {
    const std::string path = (dir_ / "made.riff").string();
    {
        auto file = RiffFile::createForWrite(path);
        ASSERT_NE(file, nullptr);
        ChunkInfo form;
        form.formType = fourCc("TEST");
        ASSERT_EQ(file->createRiff(form), 1);
        ChunkInfo odd;
        odd.id = fourCc("odd ");
        ASSERT_EQ(file->createChunk(odd), 1);
        ASSERT_EQ(file->write("abc", 3), 3);
        ASSERT_EQ(file->ascend(odd), 1);
        EXPECT_EQ(odd.size, 3u);
        ChunkInfo last;
        last.id = fourCc("last");
        ASSERT_EQ(file->createChunk(last), 1);
        ASSERT_EQ(file->write("wxyz", 4), 4);
        ASSERT_EQ(file->ascend(last), 1);
        ASSERT_EQ(file->ascend(form), 1);
        ASSERT_EQ(file->close(), 1);
    }
    const Bytes expected =
        riff("TEST", chunk("odd ", {'a', 'b', 'c'}) + chunk("last", {'w', 'x', 'y', 'z'}));
    ASSERT_EQ(test::readBytes(path), expected);

    auto file = RiffFile::openForRead(path);
    ASSERT_NE(file, nullptr);
    ChunkInfo form;
    form.formType = fourCc("TEST");
    ASSERT_EQ(file->descend(form, nullptr, ChunkSearch::findRiff), DescendResult::found);
    EXPECT_EQ(form.size, expected.size() - 8);
    EXPECT_EQ(form.dataOffset, 8u);
    EXPECT_EQ(file->seek(0, SEEK_CUR), 12);
    ChunkInfo last;
    last.id = fourCc("last");
    ASSERT_EQ(file->descend(last, &form, ChunkSearch::findChunk), DescendResult::found);
    std::array<char, 4> data{};
    ASSERT_EQ(file->read(data.data(), 4), 4);
    EXPECT_EQ(std::string(data.data(), 4), "wxyz");
    ASSERT_EQ(file->ascend(last), 1);
    EXPECT_EQ(file->seek(0, SEEK_CUR), static_cast<int64_t>(expected.size()));
}

TEST_F(RiffFileTest, SearchStaysInsideTheParentAndRestoresThePositionWhenNothingMatches) {
    const Bytes inner = chunk("LIST", test::Bytes{'I', 'N', 'F', 'O'} + chunk("name", {'x'}));
    auto file = openBytes(riff("WAVE", inner + chunk("data", {1, 2})));
    ASSERT_NE(file, nullptr);
    ChunkInfo form;
    form.formType = fourCc("WAVE");
    ASSERT_EQ(file->descend(form, nullptr, ChunkSearch::findRiff), DescendResult::found);
    ChunkInfo list;
    ASSERT_EQ(file->descend(list, &form, ChunkSearch::atPosition), DescendResult::found);
    EXPECT_EQ(list.id, kChunkList);
    EXPECT_EQ(list.formType, fourCc("INFO"));

    const int64_t inside = file->seek(0, SEEK_CUR);
    ChunkInfo data;
    data.id = fourCc("data");
    EXPECT_EQ(file->descend(data, &list, ChunkSearch::findChunk), DescendResult::notFound);
    EXPECT_EQ(file->seek(0, SEEK_CUR), inside);

    ASSERT_EQ(file->ascend(list), 1);
    ASSERT_EQ(file->descend(data, &form, ChunkSearch::findChunk), DescendResult::found);
    EXPECT_EQ(data.size, 2u);
}

TEST_F(RiffFileTest, CutShortOrOversizedStructuresAreDamagedAndAnEmptyFileHasNoChunk) {
    const Bytes twoChunks = chunk("fmt ", Bytes(16)) + chunk("data", Bytes(8));
    struct Case {
        const char* what;
        Bytes bytes;
        DescendResult expected;
    };
    const Case cases[] = {
        {"empty file", {}, DescendResult::notFound},
        {"header cut short", {'R', 'I', 'F', 'F', 4, 0}, DescendResult::damaged},
        {"form type cut short", {'R', 'I', 'F', 'F', 2, 0, 0, 0, 'W', 'A'}, DescendResult::damaged},
        {"RIFF larger than the file", riff("WAVE", twoChunks, 0xFFFFFFF0u), DescendResult::damaged},
        {"skipped chunk larger than the file", chunk("junk", Bytes(4), 1000) + riff("WAVE", {}),
         DescendResult::damaged},
        {"another form only", riff("AVI ", twoChunks), DescendResult::notFound},
    };
    for (const Case& item : cases) {
        SCOPED_TRACE(item.what);
        auto file = openBytes(item.bytes);
        ASSERT_NE(file, nullptr);
        ChunkInfo form;
        form.formType = fourCc("WAVE");
        EXPECT_EQ(file->descend(form, nullptr, ChunkSearch::findRiff), item.expected);
        EXPECT_EQ(file->seek(0, SEEK_CUR), 0);
    }
}

TEST_F(RiffFileTest, AChunkRunningPastItsParentIsDamaged) {
    const Bytes body = chunk("fmt ", Bytes(4)) + chunk("data", Bytes(8), 9);
    auto file = openBytes(riff("WAVE", body) + Bytes(16));  // room in the file, not in RIFF
    ChunkInfo form;
    form.formType = fourCc("WAVE");
    ASSERT_EQ(file->descend(form, nullptr, ChunkSearch::findRiff), DescendResult::found);
    ChunkInfo data;
    data.id = fourCc("data");
    EXPECT_EQ(file->descend(data, &form, ChunkSearch::findChunk), DescendResult::damaged);
}

TEST_F(RiffFileTest, SeekHonoursItsOriginAndRefusesOffsetsOutsideTheRiffRange) {
    auto file = openBytes(test::counting(100));
    EXPECT_EQ(file->seek(10, SEEK_SET), 10);
    EXPECT_EQ(file->seek(5, SEEK_CUR), 15);
    EXPECT_EQ(file->seek(-4, SEEK_END), 96);
    EXPECT_EQ(file->seek(-200, SEEK_CUR), -1);
    EXPECT_EQ(file->seek(0, SEEK_CUR), 96);
    uint8_t byte = 0;
    ASSERT_EQ(file->read(&byte, 1), 1);
    EXPECT_EQ(byte, 96);
    EXPECT_EQ(file->seek(int64_t{1} << 32, SEEK_SET), -1);
    std::array<uint8_t, 16> rest{};
    EXPECT_EQ(file->read(rest.data(), 16), 3);  // only what the file holds
}

TEST_F(RiffFileTest, WritesThatWouldPassFourGibibytesAreRefused) {
    auto file = RiffFile::createForWrite((dir_ / "big").string());
    ASSERT_NE(file, nullptr);
    ASSERT_EQ(file->seek(0xFFFFFFFEll, SEEK_SET), 0xFFFFFFFEll);
    EXPECT_EQ(file->write("abcd", 4), -1);
}

TEST_F(RiffFileTest, OnlyRegularFilesOpenAndCreationNeedsAnExistingFolder) {
    EXPECT_EQ(RiffFile::openForRead((dir_ / "missing").string()), nullptr);
    EXPECT_EQ(RiffFile::openForRead(dir_.path().string()), nullptr);
    const std::string fifo = (dir_ / "fifo").string();
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(RiffFile::openForRead(fifo), nullptr);
    EXPECT_EQ(RiffFile::createForWrite((dir_ / "no" / "such.wav").string()), nullptr);
}

}  // namespace
}  // namespace tunebox
