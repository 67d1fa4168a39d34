#include "playback/wav_length.h"

#include <gtest/gtest.h>

#include "support/riff_bytes.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

TEST(WavLength, TimeTextCountsMinutesSecondsAndSectorFrames) {
    EXPECT_EQ(formatSectorTime(0), "00:00:00");
    EXPECT_EQ(formatSectorTime(2351), "00:00:00");
    EXPECT_EQ(formatSectorTime(2352), "00:00:01");
    EXPECT_EQ(formatSectorTime(176400 - 1), "00:00:74");
    EXPECT_EQ(formatSectorTime(176400), "00:01:00");
    EXPECT_EQ(formatSectorTime(176400 * 61 + 2352 * 74), "01:01:74");
    EXPECT_EQ(formatSectorTime(0xFFFFFFFFu), "405:47:66");
}

TEST(WavLength, FileQueriesGiveTheNativeLengthOrFail) {
    test::TempDir dir;
    const std::string path = (dir / "one-second.wav").string();
    test::writeFile(path, test::nativeWave(test::Bytes(176400)));

    uint32_t length = 0;
    ASSERT_EQ(wavGetLength(path, length), 1);
    EXPECT_EQ(length, 176400u);
    std::string text;
    ASSERT_EQ(wavFormatLength(path, text), 1);
    EXPECT_EQ(text, "00:01:00");

    text = "unchanged";
    EXPECT_EQ(wavFormatLength((dir / "missing.wav").string(), text), 0);
    EXPECT_EQ(text, "unchanged");
    EXPECT_EQ(wavGetLength((dir / "missing.wav").string(), length), 0);
}

}  // namespace
}  // namespace tunebox
