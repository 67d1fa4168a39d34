// tunebox lyrics: the timed lines as they will be shown, what a CD+G file
// holds, and its screen at a moment written as a PNG any viewer opens.

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "support/command_runner.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

class CommandLyricsTest : public ::testing::Test {
  protected:
    std::string file(const std::string& name, const std::string& bytes) {
        const std::string path = (dir_ / name).string();
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }

    test::RunResult tunebox(const std::string& arguments) {
        return test::runTunebox(dir_, "lyrics " + arguments);
    }

    test::TempDir dir_;
};

TEST_F(CommandLyricsTest, TimedLinesAreListedInTimeOrderOncePerTag) {
    const std::string lrc = file("song.lrc",
                                 "[ti:Song]\n[offset:250]\n[01:05.50][00:10.00]Chorus\n"
                                 "[00:20.25]<00:20.25>Verse <00:21.00>words\n[61:00.004]Late\n");
    const test::RunResult listed = tunebox("'" + lrc + "'");
    EXPECT_EQ(listed.status, 0) << listed.err;
    EXPECT_EQ(listed.out,
              "00:09.75\tChorus\n00:20.00\tVerse words\n01:05.25\tChorus\n60:59.75\tLate\n");

    // 300 BPM: a beat is 0.05 s, so beat 30 after a gap of 1.5 s is due at 3 s.
    const std::string song = file("Song.TXT",
                                  "#BPM:300\n#GAP:1500\n: 30 4 0 Hel\n: 34 4 0 lo\n"
                                  "- 40\n: 41 4 0 there\nE\n");
    const test::RunResult notes = tunebox("'" + song + "'");
    EXPECT_EQ(notes.status, 0) << notes.err;
    EXPECT_EQ(notes.out, "00:03.00\tHello\n00:03.55\tthere\n");
}

// The file's bytes as the PNG holds them: the pixel indices row by row and
// the palette, checked chunk by chunk.
struct PngImage {
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<uint8_t> palette;
    std::vector<uint8_t> indices;
};

uint32_t bigEndian(const std::vector<uint8_t>& bytes, std::size_t at) {
    return uint32_t{bytes[at]} << 24 | uint32_t{bytes[at + 1]} << 16 |
           uint32_t{bytes[at + 2]} << 8 | bytes[at + 3];
}

PngImage readPng(const std::vector<uint8_t>& png) {
    PngImage image;
    const std::vector<uint8_t> signature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    EXPECT_TRUE(std::equal(signature.begin(), signature.end(), png.begin()));
    std::vector<uint8_t> packed;
    for (std::size_t at = 8; at + 12 <= png.size();) {
        const uint32_t length = bigEndian(png, at);
        const std::string type(png.begin() + at + 4, png.begin() + at + 8);
        const std::vector<uint8_t> data(png.begin() + at + 8, png.begin() + at + 8 + length);
        EXPECT_EQ(bigEndian(png, at + 8 + length), crc32(0, png.data() + at + 4, length + 4))
            << type;
        if (type == "IHDR") {
            image.width = bigEndian(data, 0);
            image.height = bigEndian(data, 4);
            EXPECT_EQ(data[8], 8);  // bits
            EXPECT_EQ(data[9], 3);  // palette colour
        } else if (type == "PLTE") {
            image.palette = data;
        } else if (type == "IDAT") {
            packed.insert(packed.end(), data.begin(), data.end());
        }
        at += 12 + length;
    }
    std::vector<uint8_t> rows((image.width + 1) * image.height);
    uLongf size = rows.size();
    EXPECT_EQ(uncompress(rows.data(), &size, packed.data(), packed.size()), Z_OK);
    for (uint32_t y = 0; y < image.height; ++y) {
        EXPECT_EQ(rows[y * (image.width + 1)], 0) << "row " << y << " is filtered";
        const auto row = rows.begin() + y * (image.width + 1) + 1;
        image.indices.insert(image.indices.end(), row, row + image.width);
    }
    return image;
}

void addPacket(std::string& stream, int instruction, std::vector<uint8_t> data) {
    data.resize(16);
    stream += {0x09, static_cast<char>(instruction), 0, 0};
    stream.append(data.begin(), data.end());
    stream.append(4, '\0');
}

TEST_F(CommandLyricsTest, ACdgFileIsCountedAndItsScreenWrittenAsAPng) {
    std::string stream;
    addPacket(stream, 30, {0, 0, 0x3C, 0x00, 0x03, 0x3F});  // 0: black, 1: red, 2: cyan
    addPacket(stream, 1, {1});
    addPacket(stream, 2, {2});
    for (int i = 0; i < 300; ++i) {
        addPacket(stream, 0, {});  // packets of no instruction pass the time
    }
    addPacket(stream, 1, {0});
    const std::string cdg = file("song.cdg", stream);

    const test::RunResult counted = tunebox("'" + cdg + "'");
    EXPECT_EQ(counted.status, 0) << counted.err;
    EXPECT_EQ(
        counted.out,
        "packets: 304 (304 graphics), 00:01.01\nmemory preset: 2\nborder preset: 1\n"
        "tile block: 0\nscroll preset: 0\nscroll copy: 0\ndefine transparent: 0\n"
        "load colours 0-7: 1\nload colours 8-15: 0\ntile block XOR: 0\nunknown instruction: 300\n");

    const std::string png = (dir_ / "frame.png").string();
    const test::RunResult framed = tunebox("'" + cdg + "' --frame 0.5 '" + png + "'");
    EXPECT_EQ(framed.status, 0) << framed.err;
    const PngImage image = readPng(test::readBytes(png));
    ASSERT_EQ(image.width, 300u);
    ASSERT_EQ(image.height, 216u);
    ASSERT_EQ(image.palette.size(), 48u);
    EXPECT_EQ(std::vector<uint8_t>(image.palette.begin(), image.palette.begin() + 9),
              (std::vector<uint8_t>{0, 0, 0, 0xFF, 0, 0, 0, 0xFF, 0xFF}));
    EXPECT_EQ(image.indices[0], 2);              // border
    EXPECT_EQ(image.indices[300 * 12 + 6], 1);   // first pixel inside it
    EXPECT_EQ(image.indices[300 * 216 - 1], 2);  // last pixel, in the border again
    EXPECT_EQ(std::count(image.indices.begin(), image.indices.end(), 1), 288 * 192);

    // A file of that name is kept unless told otherwise; later the screen is cleared.
    EXPECT_NE(tunebox("'" + cdg + "' --frame 2 '" + png + "'").status, 0);
    EXPECT_EQ(tunebox("'" + cdg + "' --frame 2 '" + png + "' --overwrite").status, 0);
    const PngImage cleared = readPng(test::readBytes(png));
    EXPECT_EQ(std::count(cleared.indices.begin(), cleared.indices.end(), 0), 300 * 216);
}

TEST_F(CommandLyricsTest, WhatHoldsNoLyricsIsRefusedOnOneLine) {
    const std::string cases[][2] = {
        {file("words.lrc", "no time tags here\n"), "no timed lyric lines in it"},
        {file("song.txt", ": 0 4 0 la\n"), "no usable #BPM in it"},
        {file("empty.cdg", std::string(23, '\x09')), "no CD+G packets in it"},
        {file("song.mp3", "ID3"), "not a lyrics file: .lrc, .txt (UltraStar) or .cdg"},
        {file("huge.lrc", "[00:01.00]la\n" + std::string(1 << 20, 'a')),
         "too big for lyrics (over 1 MB)"},
        {(dir_ / "missing.lrc").string(), ""},
    };
    for (const auto& [path, reason] : cases) {
        const test::RunResult refused = tunebox("'" + path + "'");
        EXPECT_EQ(refused.status, 2) << path;
        EXPECT_EQ(std::count(refused.err.begin(), refused.err.end(), '\n'), 1) << refused.err;
        EXPECT_NE(refused.err.find("tunebox: " + path + ": " + reason), std::string::npos)
            << refused.err;
    }
    const std::string lrc = file("plain.lrc", "[00:01.00]la\n");
    const test::RunResult notCdg = tunebox("'" + lrc + "' --frame 1 out.png");
    EXPECT_EQ(notCdg.status, 2);
    EXPECT_NE(notCdg.err.find("this is not a .cdg file"), std::string::npos) << notCdg.err;
}

}  // namespace
}  // namespace tunebox
