// CD+G streams made here packet by packet, and the screens they must draw,
// worked out pixel by pixel from where each tile and colour was put.

#include "lyrics/cdg_screen.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <vector>

#include "support/cdg_packets.h"

namespace tunebox {
namespace {

using Stream = test::CdgStream;
using test::addPacket;
using test::addTile;

constexpr int kWidth = 300;
constexpr int kHeight = 216;

bool inBorder(int x, int y) {
    return x < 6 || x >= 294 || y < 12 || y >= 204;
}

// Whether pixel (x, y) of the tile at `row`, `column` has its bit set in the
// alternating patterns; false outside the tile.
bool tileBit(int x, int y, int row, int column, uint8_t evenRows, uint8_t oddRows) {
    const int tx = x - column * 6;
    const int ty = y - row * 12;
    if (tx < 0 || tx >= 6 || ty < 0 || ty >= 12) {
        return false;
    }
    const uint8_t bits = ty % 2 == 0 ? evenRows : oddRows;
    return (bits >> (5 - tx)) & 1;
}

void expectScreen(const CdgScreen& screen, const std::function<int(int, int)>& expected) {
    int wrong = 0;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            if (screen.at(x, y) != expected(x, y) && ++wrong <= 5) {
                ADD_FAILURE() << "pixel " << x << "," << y << " is " << int{screen.at(x, y)}
                              << ", expected " << expected(x, y);
            }
        }
    }
    EXPECT_EQ(wrong, 0);
}

// Background 1, border 2, and a tile of colours 3 and 4 at row 2, column 5,
// then the same place XORed with colours 0 and 5 in another pattern.
Stream tilesStream() {
    Stream stream;
    addPacket(stream, 1, {1, 0});
    addPacket(stream, 2, {2});
    addTile(stream, false, 3, 4, 2, 5, 0b101100, 0b010011);
    addTile(stream, true, 0, 5, 2, 5, 0b111000, 0b000111);
    return stream;
}

int tilesPixel(int x, int y) {
    if (inBorder(x, y)) {
        return 2;
    }
    if (x < 30 || x >= 36 || y < 24 || y >= 36) {
        return 1;
    }
    const int drawn = tileBit(x, y, 2, 5, 0b101100, 0b010011) ? 4 : 3;
    return drawn ^ (tileBit(x, y, 2, 5, 0b111000, 0b000111) ? 5 : 0);
}

// The n-th packet is drawn once n/300 s have passed.
TEST(CdgScreen, TilesDrawAndXorOverBackgroundAndBorderAtThreeHundredPacketsASecond) {
    const Stream stream = tilesStream();
    expectScreen(cdgScreenAt(stream, 0.0), [](int, int) { return 0; });
    expectScreen(cdgScreenAt(stream, 2.5 / 300),
                 [](int x, int y) { return inBorder(x, y) ? 2 : 1; });
    expectScreen(cdgScreenAt(stream, 4.5 / 300), tilesPixel);
}

TEST(CdgScreen, ScrollPresetFillsWhatComesInAndScrollCopyWrapsIt) {
    Stream stream;
    addPacket(stream, 1, {1, 0});
    addTile(stream, false, 7, 8, 0, 0, 0b111111, 0b100001);
    addTile(stream, false, 9, 10, 17, 49, 0b110011, 0b001100);
    // Copy: one tile left and one down, so the corner tile at column 0, row 0
    // reappears at column 49, row 1 and the one at 49, 17 at 48, 0.
    addPacket(stream, 24, {0, 2 << 4, 1 << 4});
    const auto afterCopy = [](int x, int y) {
        if (tileBit(x, y, 1, 49, 0b111111, 0b100001)) {
            return 8;
        }
        if (x >= 294 && y >= 12 && y < 24) {
            return 7;
        }
        if (x >= 288 && x < 294 && y < 12) {
            return tileBit(x, y, 0, 48, 0b110011, 0b001100) ? 10 : 9;
        }
        return 1;
    };
    expectScreen(cdgScreenAt(stream, 1.0), afterCopy);

    // Preset: one tile right in colour 11; the column that leaves is gone.
    addPacket(stream, 20, {11, 1 << 4, 0});
    expectScreen(cdgScreenAt(stream, 1.0),
                 [&](int x, int y) { return x < 6 ? 11 : afterCopy(x - 6, y); });
    // Fine offsets alone move nothing in memory.
    addPacket(stream, 20, {12, 5, 11});
    expectScreen(cdgScreenAt(stream, 1.0),
                 [&](int x, int y) { return x < 6 ? 11 : afterCopy(x - 6, y); });
}

TEST(CdgScreen, ColourTablesHoldTwelveBitColoursAndTransparencyIsNamed) {
    Stream stream;
    // Red 0xA, green 0x5, blue 0xC packed as --RRRRGG --GGBBBB.
    const uint8_t high = (0xA << 2) | (0x5 >> 2);
    const uint8_t low = ((0x5 & 3) << 4) | 0xC;
    addPacket(stream, 30, {0, 0, high, low, 0x3F, 0x3F});
    addPacket(stream, 31, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, high, low});
    addPacket(stream, 28, {6});
    const CdgScreen screen = cdgScreenAt(stream, 1.0);
    EXPECT_EQ(screen.palette[0], 0x000);
    EXPECT_EQ(screen.palette[1], 0xA5C);
    EXPECT_EQ(screen.palette[2], 0xFFF);
    EXPECT_EQ(screen.palette[8], 0x000);
    EXPECT_EQ(screen.palette[15], 0xA5C);
    EXPECT_EQ(screen.transparentIndex, 6);
}

TEST(CdgScreen, OtherChannelsAndUnknownInstructionsChangeNothingButAreCounted) {
    Stream stream = tilesStream();
    addPacket(stream, 1, {9, 0}, 0x08);                  // not graphics: no preset
    addPacket(stream, 7, {9, 0});                        // no such instruction
    addTile(stream, false, 9, 9, 18, 0, 0, 0);           // below the last tile row
    addTile(stream, false, 9, 9, 0, 50, 0, 0);           // right of the last column
    stream.insert(stream.end(), {0x09, 0x01, 0, 0, 9});  // a cut packet
    expectScreen(cdgScreenAt(stream, 60.0), tilesPixel);

    const CdgCensus census = countCdgPackets(stream);
    EXPECT_EQ(census.packets, 8u);
    EXPECT_EQ(census.graphicsPackets, 7u);
    EXPECT_EQ(census.unknownInstructions, 1u);
    EXPECT_EQ(census.trailingBytes, 5u);
    // memory preset, border preset, tile block, ..., tile block XOR
    EXPECT_EQ(census.instructions, (std::array<std::size_t, 9>{1, 1, 3, 0, 0, 0, 0, 0, 1}));
}

}  // namespace
}  // namespace tunebox
