#include "mp3/first_frame.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "mp3/decoder/mpeg_frame_length.h"
#include "mp3/decoder/mpeg_header.h"

namespace tunebox {
namespace {

using Bytes = std::vector<uint8_t>;

// `count` frames that all carry the header bytes FF b1 b2 b3, each as long as
// the header says, filled with a byte no sync can start from.
Bytes frames(uint8_t b1, uint8_t b2, uint8_t b3, int count) {
    const Bytes header{0xFF, b1, b2, b3};
    MpegHeader parsed;
    EXPECT_TRUE(mpegParseHeader(header, parsed));
    Bytes bytes;
    for (int i = 0; i < count; ++i) {
        bytes.insert(bytes.end(), header.begin(), header.end());
        bytes.resize(bytes.size() + parsed.frameBytes() - 4, 0x11);
    }
    return bytes;
}

Bytes joined(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

int find(const Bytes& bytes, MpegHeader& header, uint32_t& offset,
         BufferEnd end = BufferEnd::moreFollows) {
    MpegLayer3Format format;
    return mp3GetHeader(bytes, format, header, offset, end);
}

TEST(Mp3GetHeader, TheFirstConfirmedFrameAfterGarbage) {
    // A lone sync in the garbage, then MPEG-1 Layer III 128 kbit/s 44.1 kHz,
    // padded, joint stereo.
    const Bytes bytes = joined({0x00, 0x12, 0xFF, 0xFB, 0x90, 0x00}, frames(0xFB, 0x92, 0x64, 3));
    MpegLayer3Format format;
    MpegHeader header;
    uint32_t offset = 0;
    ASSERT_EQ(mp3GetHeader(bytes, format, header, offset, BufferEnd::moreFollows), 1);
    EXPECT_EQ(offset, 6u);
    EXPECT_EQ(header.padding, 1u);
    EXPECT_EQ(header.channelMode, kJointStereo);
    EXPECT_EQ(format.wave.avgBytesPerSec, 128000u);
    EXPECT_EQ(format.blockSize, 418);  // 417 plus the padding slot
    EXPECT_EQ(format.flags, 1u);

    const auto record = encodeLayer3Format(format);
    EXPECT_EQ(record[0], 0x55);
    EXPECT_EQ(record[24] | record[25] << 8, 418);
    EXPECT_EQ(record[28] | record[29] << 8, 1393);
}

TEST(Mp3GetHeader, EveryVersionAndLayerIsNamedTimedAndMeasuredAsWhatItIs) {
    // `frameBytes` is what the stream holds; `unpadded` the decoder's length,
    // which leaves the padding slot out.
    struct Case {
        uint8_t byte1, byte2, byte3;
        uint32_t layer, rate, bitRate, samples, frameBytes, unpadded;
        uint16_t channels;
    };
    const Case cases[] = {
        {0xFB, 0x92, 0x00, 3, 44100, 128, 1152, 418, 417, 2},  // MPEG-1, padded
        {0xF3, 0x80, 0xC0, 3, 22050, 64, 576, 208, 208, 1},    // MPEG-2, mono
        {0xE3, 0x40, 0x00, 3, 11025, 32, 576, 208, 208, 2},    // MPEG 2.5
        {0xE3, 0x48, 0x00, 3, 8000, 32, 576, 288, 288, 2},     // MPEG 2.5 at 8 kHz
        {0xFD, 0xA0, 0x00, 2, 44100, 192, 1152, 626, 626, 2},  // MPEG-1 Layer II
        {0xF5, 0x80, 0x00, 2, 22050, 64, 1152, 417, 417, 2},   // MPEG-2 Layer II
        {0xFF, 0x92, 0x00, 1, 44100, 288, 384, 316, 312, 2},   // Layer I, 4-byte slot
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.rate);
        MpegLayer3Format format;
        MpegHeader header;
        uint32_t offset = 0;
        ASSERT_EQ(mp3GetHeader(frames(c.byte1, c.byte2, c.byte3, 3), format, header, offset,
                               BufferEnd::moreFollows),
                  1);
        EXPECT_EQ(mpegLayerNumber(header), c.layer);
        EXPECT_EQ(header.sampleRate, c.rate);
        EXPECT_EQ(header.bitRate, c.bitRate);
        EXPECT_EQ(header.samplesPerFrame, c.samples);
        EXPECT_EQ(format.blockSize, c.frameBytes);
        EXPECT_EQ(format.wave.channels, c.channels);
        EXPECT_EQ(mpegFrameLength(Bytes{0xFF, c.byte1, c.byte2, c.byte3}, header), c.unpadded);
    }
}

TEST(Mp3GetHeader, AShortStreamCountsOnlyWhereTheAudioOrATagEndsIt) {
    MpegHeader header;
    uint32_t offset = 0;
    const Bytes one = frames(0xFB, 0x90, 0x00, 1);
    EXPECT_EQ(find(one, header, offset, BufferEnd::endOfAudio), 1);
    EXPECT_EQ(find(one, header, offset, BufferEnd::moreFollows), 0);
    EXPECT_EQ(find(joined(one, {'T', 'A', 'G', 0}), header, offset), 1);
    EXPECT_EQ(find(joined(frames(0xFB, 0x90, 0x00, 2), Bytes(3000, 0)), header, offset), 0);
    // A cut second frame is not an end.
    const Bytes cut(one.begin(), one.end() - 1);
    EXPECT_EQ(find(joined(one, cut), header, offset, BufferEnd::endOfAudio), 0);
}

TEST(Mp3GetHeader, HeadersThatDisagreeOrAreReservedAreNoStream) {
    MpegHeader header;
    uint32_t offset = 0;
    // 44.1 kHz, then 48 kHz, then 44.1 kHz again, each at the other's end.
    const Bytes mixedRates =
        joined(joined(frames(0xFB, 0x90, 0x00, 1), frames(0xFB, 0x94, 0x00, 1)),
               frames(0xFB, 0x90, 0x00, 1));
    EXPECT_EQ(find(mixedRates, header, offset), 0);
    const Bytes reserved[] = {
        {0xFF, 0xFB, 0x00, 0x00},  // free format
        {0xFF, 0xFB, 0x9C, 0x00},  // reserved sample rate
        {0xFF, 0xFB, 0xF0, 0x00},  // reserved bit rate
        {0xFF, 0xEB, 0x90, 0x00},  // reserved version
        {0xFF, 0xF9, 0x90, 0x00},  // reserved layer
        {0xFF, 0xDB, 0x90, 0x00},  // only two of the sync's last three bits
    };
    for (const Bytes& bytes : reserved) {
        Bytes repeated;
        for (int i = 0; i < 600; ++i) {
            repeated.insert(repeated.end(), bytes.begin(), bytes.end());
        }
        EXPECT_EQ(find(repeated, header, offset, BufferEnd::endOfAudio), 0);
        EXPECT_FALSE(mpegParseHeader(bytes, header));
        // The decoder's frame length refuses them too.
        if (bytes[2] >> 4 != 0) {  // free format is the decoder's to search
            EXPECT_EQ(mpegFrameLength(bytes, header), 0u);
        }
    }
    EXPECT_EQ(find(Bytes(1000, 0), header, offset), 0);
    EXPECT_EQ(find(Bytes{0xFF}, header, offset), 0);
    EXPECT_EQ(mpegFrameLength(Bytes{0xFF, 0xFB}, header), 0u);
}

// Free-format frames of `length` bytes, each starting FF FB 00 00.
Bytes freeFormatStream(std::size_t length, int count) {
    Bytes bytes;
    for (int f = 0; f < count; ++f) {
        bytes.insert(bytes.end(), {0xFF, 0xFB, 0x00, 0x00});
        bytes.resize(bytes.size() + length - 4, 0x11);
    }
    return bytes;
}

TEST(MpegFrameLength, FreeFormatFramesAreMeasuredBySearching) {
    MpegHeader header;
    uint32_t bitRate = 0;
    uint32_t offset = 0;
    EXPECT_EQ(
        mpegParseFirstFrame(joined({0, 0, 0}, freeFormatStream(600, 5)), header, bitRate, offset),
        600u);
    EXPECT_EQ(offset, 3u);
    EXPECT_EQ(bitRate, 183750u);  // 600 bytes per 1152 samples at 44.1 kHz
    EXPECT_EQ(mpegFrameLength(freeFormatStream(2100, 4), header), 0u);  // beyond the search
    EXPECT_EQ(mpegFrameLength(freeFormatStream(600, 1), header), 0u);   // nothing confirms it
}

TEST(Mp3GetHeader, RandomBytesAreNeverAStream) {
    std::mt19937 random(20261123);
    std::uniform_int_distribution<int> byte(0, 255);
    int lonePassableHeaders = 0;
    for (int file = 0; file < 2000; ++file) {
        Bytes bytes(1000);
        for (auto& b : bytes) {
            b = static_cast<uint8_t>(byte(random));
        }
        for (std::size_t i = 0; i + 4 <= bytes.size(); ++i) {
            MpegHeader header;
            lonePassableHeaders +=
                mpegParseHeader(Bytes(bytes.begin() + i, bytes.begin() + i + 4), header);
        }
        MpegHeader header;
        uint32_t offset = 0;
        ASSERT_EQ(find(bytes, header, offset, BufferEnd::endOfAudio), 0) << "file " << file;
    }
    // The search did meet headers that pass alone: the chain refused them.
    EXPECT_GT(lonePassableHeaders, 100);
}

}  // namespace
}  // namespace tunebox
