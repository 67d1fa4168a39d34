// Lyrics found beside the accompaniment, and the line due at each moment.

#include "lyrics/lyric_finder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "lyrics/lyric_timing.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

class LyricFinderTest : public ::testing::Test {
  protected:
    std::string put(const std::string& name, const std::string& text = "") {
        const std::string path = (dir_ / name).string();
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }

    test::TempDir dir_;
};

TEST_F(LyricFinderTest, TheLrcComesFirstThenTheSongNamingTheAudioThenTheCdg) {
    const std::string mp3 = put("Song.mp3");
    EXPECT_EQ(findLyricsFor(mp3), std::nullopt);

    const std::string cdg = put("Song.CDG");
    EXPECT_EQ(findLyricsFor(mp3), cdg);
    // A song of the same name that plays another file is not this one's.
    put("Song.txt", "#MP3:Other.mp3\n#BPM:100\n: 0 1 0 x\n");
    EXPECT_EQ(findLyricsFor(mp3), cdg);
    const std::string song = put("Song.txt", "#TITLE:t\n#MP3:Song.mp3\n#BPM:100\n: 0 1 0 x\n");
    EXPECT_EQ(findLyricsFor(mp3), song);
    const std::string lrc = put("Song.lrc", "[00:01.00]x\n");
    EXPECT_EQ(findLyricsFor(mp3), lrc);
    EXPECT_EQ(findLyricsFor(put("Other.wav")), std::nullopt);
}

TEST_F(LyricFinderTest, AnUltraStarSongNamesItsAudioInItsOwnFolder) {
    EXPECT_EQ(ultraStarAudioFile(put("a.txt", "#BPM:300\n#MP3: Track 1.mp3 \n: 0 1 0 x\n")),
              (dir_ / "Track 1.mp3").string());
    EXPECT_EQ(ultraStarAudioFile(put("b.txt", "#BPM:300\n: 0 1 0 x\n")), std::nullopt);
    EXPECT_EQ(ultraStarAudioFile(put("c.txt", "just some notes\n")), std::nullopt);
    EXPECT_EQ(ultraStarAudioFile((dir_ / "missing.txt").string()), std::nullopt);
}

TEST(LyricTiming, TheDueLineIsTheLastToHaveStarted) {
    LyricSheet sheet;
    for (const double start : {1.0, 2.5, 2.5, 4.0}) {
        sheet.lines.push_back({start, "", {}});
    }
    EXPECT_EQ(dueLyricLine(sheet, 0.0), std::nullopt);
    EXPECT_EQ(dueLyricLine(sheet, 0.999), std::nullopt);
    EXPECT_EQ(dueLyricLine(sheet, 1.0), 0u);
    EXPECT_EQ(dueLyricLine(sheet, 2.499), 0u);
    EXPECT_EQ(dueLyricLine(sheet, 2.5), 2u);
    EXPECT_EQ(dueLyricLine(sheet, 3.9), 2u);
    EXPECT_EQ(dueLyricLine(sheet, 1e6), 3u);
    EXPECT_EQ(dueLyricLine(LyricSheet{}, 5.0), std::nullopt);
}

}  // namespace
}  // namespace tunebox
