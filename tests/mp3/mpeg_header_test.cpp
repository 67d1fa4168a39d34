#include "mp3/mpeg_header.h"

#include <gtest/gtest.h>

#include <vector>

namespace tunebox {
namespace {

TEST(Mp3GetHeader, ParsesTheFirstSyncAfterGarbage) {
    // Garbage, then MPEG-1 Layer III 128 kbit/s 44.1 kHz, padded, joint stereo.
    const std::vector<uint8_t> bytes{0x00, 0x12, 0xFF, 0x1F, 0xFF, 0xFB, 0x92, 0x64, 0x00};
    MpegLayer3Format format;
    MpegHeader header;
    uint32_t offset = 0;
    ASSERT_EQ(mp3GetHeader(bytes, format, header, offset), 1);
    EXPECT_EQ(offset, 4u);
    EXPECT_EQ(header.versionId, 3u);
    EXPECT_EQ(header.layerBit, 1u);
    EXPECT_EQ(header.bitRate, 128u);
    EXPECT_EQ(header.sampleRate, 44100u);
    EXPECT_EQ(header.samplesPerFrame, 1152u);
    EXPECT_EQ(header.padding, 1u);
    EXPECT_EQ(header.channelMode, 1u);
    EXPECT_EQ(format.wave.channels, 2);
    EXPECT_EQ(format.wave.avgBytesPerSec, 128000u);
    EXPECT_EQ(format.blockSize, 418);  // 417 plus the padding slot
    EXPECT_EQ(format.flags, 1u);

    const auto record = encodeLayer3Format(format);
    EXPECT_EQ(record[0], 0x55);
    EXPECT_EQ(record[24] | record[25] << 8, 418);
    EXPECT_EQ(record[28] | record[29] << 8, 1393);
}

TEST(Mp3GetHeader, LowRateVersionsAndMono) {
    struct Case {
        uint8_t byte1, byte2, byte3;
        uint32_t rate, bitRate, blockSize;
        uint16_t channels;
    };
    const Case cases[] = {
        {0xF3, 0x80, 0xC0, 22050, 64, 208, 1},  // MPEG-2, 64 kbit/s, mono
        {0xE3, 0x40, 0x00, 11025, 32, 208, 2},  // MPEG 2.5, 32 kbit/s
        {0xE3, 0x48, 0x00, 8000, 32, 288, 2},   // MPEG 2.5 at 8 kHz (index 2)
    };
    for (const auto& c : cases) {
        const std::vector<uint8_t> bytes{0xFF, c.byte1, c.byte2, c.byte3, 0};
        MpegLayer3Format format;
        MpegHeader header;
        uint32_t offset = 0;
        ASSERT_EQ(mp3GetHeader(bytes, format, header, offset), 1) << c.rate;
        EXPECT_EQ(header.sampleRate, c.rate);
        EXPECT_EQ(header.bitRate, c.bitRate);
        EXPECT_EQ(header.samplesPerFrame, 576u);
        EXPECT_EQ(format.blockSize, c.blockSize) << c.rate;
        EXPECT_EQ(format.wave.channels, c.channels);
    }
}

TEST(Mp3GetHeader, RefusesFreeFormatReservedRatesAndMissingSync) {
    MpegLayer3Format format;
    MpegHeader header;
    uint32_t offset = 0;
    EXPECT_EQ(mp3GetHeader(std::vector<uint8_t>{0xFF, 0xFB, 0x00, 0x00, 0}, format, header, offset),
              0);
    EXPECT_EQ(mp3GetHeader(std::vector<uint8_t>{0xFF, 0xFB, 0x9C, 0x00, 0}, format, header, offset),
              0);
    EXPECT_EQ(mp3GetHeader(std::vector<uint8_t>{0xFF, 0xEB, 0x90, 0x00, 0}, format, header, offset),
              0);
    EXPECT_EQ(mp3GetHeader(std::vector<uint8_t>(1000, 0), format, header, offset), 0);
    // A sync in the last three bytes is not searched.
    EXPECT_EQ(mp3GetHeader(std::vector<uint8_t>{0, 0xFF, 0xFB, 0x90}, format, header, offset), 0);
    EXPECT_EQ(mp3GetHeader(std::vector<uint8_t>{0xFF}, format, header, offset), 0);
}

}  // namespace
}  // namespace tunebox
