#include "mp3/decoder/xing_tag.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

namespace tunebox {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr std::size_t kStereoSideInfo = 32;

void append(Bytes& bytes, std::string_view text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}

void appendBe32(Bytes& bytes, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<uint8_t>(value >> shift));
    }
}

// A whole MPEG-1 Layer III 128 kbit/s 44.1 kHz tag frame, with a check word
// after the header when `protectedFrame`, counting 1,000 frames and, in the
// extension of `encoder`, 576 samples of delay and 1,234 of padding.
Bytes tagFrame(std::string_view name, std::string_view encoder, bool protectedFrame = false) {
    Bytes frame{0xFF, static_cast<uint8_t>(protectedFrame ? 0xFA : 0xFB), 0x90, 0x00};
    if (protectedFrame) {
        frame.insert(frame.end(), {0x12, 0x34});
    }
    frame.resize(frame.size() + kStereoSideInfo, 0);
    append(frame, name);
    appendBe32(frame, 0x0F);  // frames, bytes, table and quality follow
    appendBe32(frame, 1000);
    appendBe32(frame, 417000);
    frame.resize(frame.size() + 100 + 4, 0);
    const std::size_t extension = frame.size();
    append(frame, encoder);
    frame.resize(extension + 21, 0);
    frame.insert(frame.end(), {0x24, 0x04, 0xD2});  // 576 and 1,234 as two 12-bit numbers
    frame.resize(417, 0);
    return frame;
}

TEST(XingTag, CountsAndTheKnownEncodersGapAreRead) {
    for (const bool protectedFrame : {false, true}) {
        XingTag tag;
        ASSERT_TRUE(readXingTag(tagFrame("Xing", "LAME3.100", protectedFrame), tag));
        EXPECT_EQ(tag.frames, 1000u);
        EXPECT_EQ(tag.streamBytes, 417000u);
        EXPECT_FALSE(tag.constantBitRate);
        EXPECT_TRUE(tag.gapless);
        EXPECT_EQ(tag.encoderDelay, 576u);
        EXPECT_EQ(tag.encoderPadding, 1234u);
    }
    XingTag info;
    ASSERT_TRUE(readXingTag(tagFrame("Info", "Lavc60.31"), info));
    EXPECT_TRUE(info.constantBitRate);
    EXPECT_TRUE(info.gapless);
}

TEST(XingTag, AnUnknownEncodersGapIsNotTrusted) {
    XingTag tag;
    ASSERT_TRUE(readXingTag(tagFrame("Xing", "GOGO"), tag));
    EXPECT_EQ(tag.frames, 1000u);
    EXPECT_FALSE(tag.gapless);
    EXPECT_EQ(tag.encoderDelay, 0u);
    EXPECT_EQ(tag.encoderPadding, 0u);
}

TEST(XingTag, AudioFramesAreNoTag) {
    const Bytes whole = tagFrame("Xing", "LAME");
    Bytes sideInfoSet = whole;
    sideInfoSet[10] = 1;
    const Bytes cases[] = {
        sideInfoSet, tagFrame("Xinf", "LAME"),
        Bytes(whole.begin(), whole.begin() + 40),  // cut before the tag's flags
        Bytes{0xFF, 0xFD, 0x90, 0x00},             // Layer II
    };
    for (const Bytes& frame : cases) {
        XingTag tag;
        EXPECT_FALSE(readXingTag(frame, tag));
    }
}

}  // namespace
}  // namespace tunebox
