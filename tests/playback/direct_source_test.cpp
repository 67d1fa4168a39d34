#include "playback/direct_source.h"

#include <gtest/gtest.h>

#include <array>

#include "support/riff_bytes.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

TEST(DirectSource, SeeksGoToAbsoluteFileOffsetsNotDataOffsets) {
    test::TempDir dir;
    const std::string path = (dir / "a.wav").string();
    test::writeFile(path, test::nativeWave(test::counting(100)));
    auto file = RiffFile::openForRead(path);

    std::array<uint8_t, 4> bytes{};
    uint32_t count = 0;
    uint32_t endOfSource = 0;
    ASSERT_EQ(wavSeekDirect(*file, 0), 1);
    ASSERT_EQ(wavReadDirect(*file, bytes.data(), 4, count, endOfSource), 1);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "RIFF");

    ASSERT_EQ(wavSeekDirect(*file, 44 + 8), 1);
    ASSERT_EQ(wavReadDirect(*file, bytes.data(), 1, count, endOfSource), 1);
    EXPECT_EQ(bytes[0], 8);

    // Past the end is a place to stand, where reads find nothing.
    ASSERT_EQ(wavSeekDirect(*file, 100000), 1);
    EXPECT_EQ(wavReadDirect(*file, bytes.data(), 4, count, endOfSource), 0);
    EXPECT_EQ(endOfSource, 1u);
}

}  // namespace
}  // namespace tunebox
