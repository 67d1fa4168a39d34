#include "mp3/id3_tag.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "mp3/id3_text.h"
#include "mp3/id3_v1_fields.h"
#include "support/riff_bytes.h"

namespace tunebox {
namespace {

using test::Bytes;
using test::operator+;

void appendBigEndian(Bytes& bytes, uint32_t value, int count) {
    for (int shift = 8 * (count - 1); shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<uint8_t>(value >> shift));
    }
}

// A version 2.3/2.4 frame: id, plain big-endian size, two flag bytes, data.
Bytes frame(const std::string& id, const Bytes& data) {
    Bytes bytes;
    test::appendText(bytes, id);
    appendBigEndian(bytes, static_cast<uint32_t>(data.size()), 4);
    bytes.push_back(0);
    bytes.push_back(0);
    bytes.insert(bytes.end(), data.begin(), data.end());
    return bytes;
}

Bytes textData(const std::string& text) {
    Bytes data{0};  // encoding byte
    test::appendText(data, text);
    return data;
}

Bytes tag(int version, const Bytes& body, uint8_t flags = 0) {
    Bytes bytes{'I', 'D', '3', static_cast<uint8_t>(version), 0, flags};
    const auto size = static_cast<uint32_t>(body.size());
    bytes.push_back((size >> 21) & 0x7F);
    bytes.push_back((size >> 14) & 0x7F);
    bytes.push_back((size >> 7) & 0x7F);
    bytes.push_back(size & 0x7F);
    bytes.insert(bytes.end(), body.begin(), body.end());
    return bytes;
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

std::unique_ptr<std::FILE, FileCloser> streamOf(const Bytes& bytes) {
    std::unique_ptr<std::FILE, FileCloser> file(std::tmpfile());
    std::fwrite(bytes.data(), 1, bytes.size(), file.get());
    std::rewind(file.get());
    return file;
}

TEST(Id3v2, ReadsTextFramesOfConsecutiveTagsAndAddsTheirSizes) {
    const Bytes first =
        tag(3, frame("TIT2", textData("Song")) + frame("TPE1", textData("Singer")) +
                   frame("TYER", textData("1999")) + frame("TRCK", textData("7/12")) +
                   frame("TLEN", textData("215000")));
    const Bytes second =
        tag(4, frame("TALB", textData("Album")) + frame("TCOM", textData("Writer")) +
                   frame("TCON", textData("(17)")));
    const auto stream = streamOf(first + second + Bytes{0xFF, 0xFB, 0x90, 0x00});
    Id3Tag result;
    uint32_t total = 0;
    ASSERT_EQ(mp3GetId3v2(result, total, stream.get()), 1);
    EXPECT_EQ(total, first.size() + second.size());
    EXPECT_EQ(std::ftell(stream.get()), static_cast<long>(total));
    EXPECT_EQ(result.title, "Song");
    EXPECT_EQ(result.artist, "Singer");
    EXPECT_EQ(result.album, "Album");
    EXPECT_EQ(result.composer, "Writer");
    EXPECT_EQ(result.genre, "Rock");
    EXPECT_EQ(result.year, 1999);
    EXPECT_EQ(result.track, 7);
    EXPECT_EQ(result.lengthSeconds, 215);
    EXPECT_EQ(result.header[3], 4);  // the last tag's header is kept
}

TEST(Id3v2, FrameSizesArePlainBigEndianAndOversizedFramesEndTheLoop) {
    // A size byte with bit 7 set is read as it stands (not sync-safe).
    Bytes longTitle = textData(std::string(0x80 - 1, 'x'));
    const Bytes body = frame("TIT2", longTitle) + frame("TALB", textData("Kept"));
    Id3Tag result;
    uint32_t total = 0;
    ASSERT_EQ(mp3GetId3v2(result, total, streamOf(tag(4, body)).get()), 1);
    EXPECT_EQ(result.title, std::string(0x7F, 'x'));
    EXPECT_EQ(result.album, "Kept");

    Bytes huge = frame("TIT2", textData("Lost"));
    huge[4] = 0;
    huge[5] = 0;
    huge[6] = 0x75;
    huge[7] = 0x31;  // 30,001 bytes, clamped to what the tag holds first
    const Bytes bigTag = tag(3, frame("TALB", textData("Before")) + huge + Bytes(30010, 'y'));
    Id3Tag clipped;
    ASSERT_EQ(mp3GetId3v2(clipped, total, streamOf(bigTag).get()), 1);
    EXPECT_EQ(clipped.album, "Before");
    EXPECT_EQ(clipped.title, "");
    EXPECT_EQ(total, bigTag.size());
}

TEST(Id3v2, DamagedTagsNeverReadPastTheFile) {
    Id3Tag result;
    uint32_t total = 0;
    // The tag claims far more than the file holds.
    Bytes shortTag = tag(3, frame("TIT2", textData("Cut")));
    shortTag[6] = 0x7F;
    EXPECT_EQ(mp3GetId3v2(result, total, streamOf(shortTag).get()), 1);
    EXPECT_EQ(result.title, "Cut");

    // An extended header whose little-endian size runs past the end.
    Bytes wild = tag(3, Bytes{0xFF, 0xFF, 0xFF, 0x7F, 1, 2, 3}, 0x40);
    EXPECT_EQ(mp3GetId3v2(result, total, streamOf(wild).get()), 1);
    EXPECT_EQ(total, wild.size());

    EXPECT_EQ(mp3GetId3v2(result, total, streamOf(Bytes{'I', 'D'}).get()), 0);
    EXPECT_EQ(total, 0u);
}

// What an unsynchronising writer stores: a 0x00 after every 0xFF.
Bytes unsynchronised(const Bytes& bytes) {
    Bytes out;
    for (const uint8_t b : bytes) {
        out.push_back(b);
        if (b == 0xFF) {
            out.push_back(0);
        }
    }
    return out;
}

TEST(Id3v2, UnsynchronisedTagsAndExtendedHeadersKeepTheirTexts) {
    // A UTF-16 title starts with the mark FF FE, which unsynchronisation breaks up.
    const Bytes title{1, 0xFF, 0xFE, 'S', 0, 0xFF, 0x30};
    const Bytes body = frame("TIT2", title) + frame("TPE1", textData("Singer"));
    Id3Tag result;
    uint32_t total = 0;
    // Frame sizes count the bytes as stored.
    const Bytes unsynced =
        tag(3, frame("TIT2", unsynchronised(title)) + frame("TPE1", textData("Singer")), 0x80);
    ASSERT_EQ(mp3GetId3v2(result, total, streamOf(unsynced).get()), 1);
    EXPECT_EQ(result.title, "S\u30FF");
    EXPECT_EQ(result.artist, "Singer");
    EXPECT_EQ(total, unsynced.size());

    // Version 2.3: a big-endian size without its own four bytes.
    const Bytes extended3 = Bytes{0, 0, 0, 6, 0, 0, 0, 0, 0, 0} + body;
    Id3Tag three;
    ASSERT_EQ(mp3GetId3v2(three, total, streamOf(tag(3, extended3, 0x40)).get()), 1);
    EXPECT_EQ(three.artist, "Singer");
    // Version 2.4: a sync-safe size with them.
    const Bytes extended4 = Bytes{0, 0, 0, 6, 1, 0} + body;
    Id3Tag four;
    ASSERT_EQ(mp3GetId3v2(four, total, streamOf(tag(4, extended4, 0x40)).get()), 1);
    EXPECT_EQ(four.artist, "Singer");
}

TEST(Id3v1, FieldsFillWhatTheId3v2TagLeftOut) {
    std::array<uint8_t, kId3v1Bytes> block{};
    const auto put = [&](std::size_t at, const std::string& text) {
        std::copy(text.begin(), text.end(), block.begin() + static_cast<long>(at));
    };
    put(0, "TAG");
    put(3, "Old Title                     ");  // space-padded
    put(33, "Old Singer");
    put(63, "Old Album");
    put(93, "1987");
    block[126] = 4;  // ID3v1.1 track after a NUL
    block[127] = 17;
    Id3Tag result;
    result.title = "New Title";
    id3FillFromV1(result, block);
    EXPECT_EQ(result.title, "New Title");
    EXPECT_EQ(result.artist, "Old Singer");
    EXPECT_EQ(result.album, "Old Album");
    EXPECT_EQ(result.genre, "Rock");
    EXPECT_EQ(result.year, 1987);
    EXPECT_EQ(result.track, 4);

    Id3Tag bare;
    put(3, "Old Title");
    block[127] = 255;  // no genre
    id3FillFromV1(bare, block);
    EXPECT_EQ(bare.title, "Old Title");
    EXPECT_EQ(bare.genre, "");
}

TEST(Id3v1, RecognisesTheTagAtTheEnd) {
    Bytes file(500, 0x55);
    Bytes block(128, ' ');
    block[0] = 'T';
    block[1] = 'A';
    block[2] = 'G';
    file.insert(file.end(), block.begin(), block.end());
    std::array<uint8_t, kId3v1Bytes> read{};
    EXPECT_EQ(mp3GetId3v1(read, streamOf(file).get()), 1);
    EXPECT_EQ(read[0], 'T');
    EXPECT_EQ(mp3GetId3v1(read, streamOf(Bytes(500, 0)).get()), 0);
    EXPECT_EQ(mp3GetId3v1(read, streamOf(Bytes(20, 0)).get()), 0);
}

TEST(Id3Text, Utf16WithEitherMarkIsReadLittleEndian) {
    const std::vector<char> littleEndian{'\xFF', '\xFE', 'A', 0, '\x42', '\x30', 0, 0};
    EXPECT_EQ(id3CopyText(littleEndian, littleEndian.size()), "A\u3042");
    const std::vector<char> bigMark{'\xFE', '\xFF', 'A', 0, '\x42', '\x30'};
    EXPECT_EQ(id3CopyText(bigMark, bigMark.size()), "A\u3042");
    const std::vector<char> pair{'\xFF', '\xFE', '\x3C', '\xD8', '\xB5', '\xDF'};  // U+1F3B5
    EXPECT_EQ(id3CopyText(pair, pair.size()), "\U0001F3B5");
    // Japanese takes three UTF-8 bytes a character against two in UTF-16.
    const std::vector<char> japanese{'\xFF', '\xFE', '\xC6', '\x30', '\xB9',
                                     '\x30', '\xC8', '\x30', '\xF2', '\x66'};
    EXPECT_EQ(id3CopyText(japanese, japanese.size()), "テスト曲");
    const std::vector<char> plain{'a', 'b', 0, 'c'};
    EXPECT_EQ(id3CopyText(plain, plain.size()), "ab");
    const std::vector<char> longText(5000, 'z');
    EXPECT_EQ(id3CopyText(longText, longText.size()).size(), kId3TextBytes);
}

TEST(Id3Text, GenreRule) {
    bool stores = false;
    EXPECT_EQ(id3GenreText("(17)Rock", stores), "Rock");
    EXPECT_EQ(id3GenreText("(17)", stores), "Rock");
    EXPECT_EQ(id3GenreText("(0)", stores), "Blues");
    EXPECT_EQ(id3GenreText("(125)", stores), "Dance Hall");
    EXPECT_EQ(id3GenreText("(126)", stores), "");
    EXPECT_EQ(id3GenreText("(200)", stores), "");
    EXPECT_TRUE(stores);
    EXPECT_EQ(id3GenreText("Pop", stores), "Pop");
    id3GenreText("(12)", stores);
    EXPECT_FALSE(stores);
}

}  // namespace
}  // namespace tunebox
