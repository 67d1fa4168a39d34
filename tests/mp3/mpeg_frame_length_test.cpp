#include "mp3/decoder/mpeg_frame_length.h"

#include <gtest/gtest.h>

#include <vector>

namespace tunebox {
namespace {

uint32_t lengthOf(std::vector<uint8_t> bytes) {
    MpegHeader header;
    return mpegFrameLength(bytes, header);
}

TEST(MpegFrameLength, FixedRatesOfEveryVersionAndLayer) {
    EXPECT_EQ(lengthOf({0xFF, 0xFB, 0x90, 0x00}), 417u);  // MPEG-1 L3 128k 44.1k
    EXPECT_EQ(lengthOf({0xFF, 0xFB, 0x92, 0x00}), 417u);  // padding is not added
    EXPECT_EQ(lengthOf({0xFF, 0xF3, 0x80, 0x00}), 208u);  // MPEG-2 L3 64k 22.05k
    EXPECT_EQ(lengthOf({0xFF, 0xE3, 0x40, 0x00}), 208u);  // MPEG 2.5 L3 32k 11.025k
    EXPECT_EQ(lengthOf({0xFF, 0xFF, 0x10, 0x00}), 32u);   // MPEG-1 L1 32k 44.1k
    EXPECT_EQ(lengthOf({0xFF, 0xFD, 0x80, 0x00}), 417u);  // MPEG-1 L2 128k 44.1k
    EXPECT_EQ(lengthOf({0xFF, 0xDB, 0x90, 0x00}), 0u);    // high nibble 0xD
    EXPECT_EQ(lengthOf({0xFF, 0xF9, 0x90, 0x00}), 0u);    // reserved layer
    EXPECT_EQ(lengthOf({0xFF, 0xFB, 0x9C, 0x00}), 0u);    // reserved rate
    EXPECT_EQ(lengthOf({0xFF, 0xFB}), 0u);
}

// Free-format frames of `length` bytes, each starting FF FB 00 00.
std::vector<uint8_t> freeFormatStream(std::size_t length, int frames) {
    std::vector<uint8_t> bytes;
    for (int f = 0; f < frames; ++f) {
        std::vector<uint8_t> frame(length, 0x11);
        frame[0] = 0xFF;
        frame[1] = 0xFB;
        frame[2] = 0x00;
        frame[3] = 0x00;
        bytes.insert(bytes.end(), frame.begin(), frame.end());
    }
    return bytes;
}

TEST(MpegFrameLength, FreeFormatFramesAreMeasuredBySearching) {
    MpegHeader header;
    uint32_t bitRate = 0;
    uint32_t offset = 0;
    auto stream = freeFormatStream(600, 5);
    stream.insert(stream.begin(), {0x00, 0x00, 0x00});
    EXPECT_EQ(mpegParseFirstFrame(stream, header, bitRate, offset), 600u);
    EXPECT_EQ(offset, 3u);
    EXPECT_EQ(bitRate, 882u * 600 * 1000 / 2880);  // 183,750 bit/s

    EXPECT_EQ(lengthOf(freeFormatStream(2100, 4)), 0u);  // longer than the search goes
    EXPECT_EQ(lengthOf(freeFormatStream(600, 1)), 0u);   // nothing to confirm it
}

}  // namespace
}  // namespace tunebox
