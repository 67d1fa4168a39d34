// Damaged and hostile lyrics files: cut short, binary, one enormous line, a
// flood of tags. Each is read in time linear in its size (a quadratic
// reading of these would not finish within the test's time limit) and
// gives a bounded sheet or a refusal, never a crash.

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "lyrics/cdg_screen.h"
#include "lyrics/lrc_lyrics.h"
#include "lyrics/lyric_text.h"
#include "lyrics/ultrastar_lyrics.h"

namespace tunebox {
namespace {

constexpr std::size_t kHugeLine = 20 * 1024 * 1024;
constexpr std::size_t kFloodLine = 2 * 1024 * 1024;

const char* const kLrc =
    "[ti:Cut]\n[offset:-20]\n[00:01.00][00:09.00]<00:01.00>One <00:01.50>two<00:02.00>\n"
    "[00:03.00]Three\n";
const char* const kSong =
    "#TITLE:Cut\n#BPM:300,5\n#GAP:900\n#RELATIVE:YES\n: 0 4 1 One\n"
    "- 4 6\n* 0 2 1 two\nP2\n: 1 1 1 no\nE\n";

std::string randomBytes(std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
    return bytes;
}

void expectBounded(const LyricReading& reading) {
    if (!reading.sheet) {
        EXPECT_FALSE(reading.problem.empty());
        return;
    }
    EXPECT_LE(reading.sheet->lines.size(), kMaxLyricLines);
    for (const LyricLine& line : reading.sheet->lines) {
        EXPECT_LE(line.text.size(), kMaxLyricLineBytes);
        EXPECT_LE(line.syllables.size(), kMaxLyricSyllables);
    }
}

TEST(HostileLyrics, CutFilesAndRandomBytesAreReadOrRefused) {
    for (const std::string text : {kLrc, kSong}) {
        for (std::size_t size = 0; size <= text.size(); ++size) {
            expectBounded(parseLrc(text.substr(0, size)));
            expectBounded(parseUltraStar(text.substr(0, size)));
        }
    }
    for (unsigned seed = 1; seed <= 20; ++seed) {
        const std::string bytes = randomBytes(4096, seed);
        // With tags sprinkled in, some of it reads as lines.
        std::string tagged;
        for (std::size_t at = 0; at < bytes.size(); at += 64) {
            tagged += "\n[00:01.00]" + bytes.substr(at, 64) + "\n: 1 2 3 " + bytes.substr(at, 32);
        }
        for (const std::string& text : {bytes, tagged, "#BPM:100\n" + tagged}) {
            expectBounded(parseLrc(text));
            expectBounded(parseUltraStar(text));
        }
    }
}

TEST(HostileLyrics, OneEnormousLineIsReadOnceAndKeptWithinBounds) {
    const std::string words(kHugeLine, 'a');
    const LyricReading lrc = parseLrc("[00:01.00]" + words);
    ASSERT_TRUE(lrc.sheet);
    EXPECT_EQ(lrc.sheet->lines.at(0).text.size(), kMaxLyricLineBytes);
    expectBounded(parseUltraStar("#BPM:100\n: 0 1 1 " + words));
    expectBounded(parseUltraStar("#TITLE:" + words + "\n#BPM:100\n: 0 1 1 a"));
}

TEST(HostileLyrics, FloodsOfTagsAreReadOnce) {
    // Openings that never close, and tags without end: a reading that looked
    // ahead for each of them again would take hours here.
    for (const std::string unit : {"[", "<", "[00:01.00]", "<00:01.00>", "[ti:", "[00:0"}) {
        std::string line = "[00:01.00]";
        while (line.size() < kFloodLine) {
            line += unit;
        }
        expectBounded(parseLrc(line));
        expectBounded(parseUltraStar("#BPM:1\n: 0 1 1 " + line));
    }
}

TEST(HostileLyrics, MillionsOfShortLinesStopAtTheLineLimit) {
    std::string lrc;
    std::string song = "#BPM:100\n";
    for (std::size_t i = 0; i < kMaxLyricLines + 1000; ++i) {
        lrc += "[00:01]x\n";
        song += ": 1 1 1 x\n- 2\n";
    }
    expectBounded(parseLrc(lrc));
    expectBounded(parseUltraStar(song));
    std::string notes = "#BPM:100\n";
    for (std::size_t i = 0; i < kMaxLyricSyllables + 1000; ++i) {
        notes += ": 1 1 1 x\n";
    }
    expectBounded(parseUltraStar(notes));
}

TEST(HostileLyrics, RandomCdgBytesDrawWithinTheScreen) {
    for (unsigned seed = 1; seed <= 4; ++seed) {
        std::string bytes = randomBytes(300 * kCdgPacketBytes * 4, seed);
        // Make every packet a graphics one, so that each instruction is hit.
        for (std::size_t at = 0; at < bytes.size(); at += kCdgPacketBytes) {
            bytes[at] = static_cast<char>(0x09 | (bytes[at] & 0xC0));
        }
        const std::span<const uint8_t> stream(reinterpret_cast<const uint8_t*>(bytes.data()),
                                              bytes.size());
        const CdgScreen screen = cdgScreenAt(stream, 1e9);
        for (const uint8_t pixel : screen.pixels) {
            ASSERT_LT(pixel, 16);
        }
        EXPECT_EQ(countCdgPackets(stream).graphicsPackets, bytes.size() / kCdgPacketBytes);
    }
}

}  // namespace
}  // namespace tunebox
