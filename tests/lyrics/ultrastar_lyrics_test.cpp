// UltraStar songs: beats turned into seconds at several tempi and gaps, in
// absolute and relative mode, with the note kinds and duets of real songs.

#include "lyrics/ultrastar_lyrics.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tunebox {
namespace {

// Four lines of the same notes, whatever the tempo: the times below are
// worked out from the beat numbers written here.
const char* const kNotes =
    ": 0 4 60 Twin\n"
    ": 4 4 60 kle\n"
    "* 8 4 67  twin\n"
    "F 12 4 67 kle\n"
    "- 16\n"
    ": 20 2 69 lit\n"
    "R 22 2 69 tle\n"
    "G 24 8 67  star\n"
    "- 34 36\n"
    ": 40 4 65 How\n"
    "E\n"
    ": 60 4 65 after the end\n";

struct Tempo {
    const char* name;
    const char* bpmText;
    double bpm;
    double gapMs;
};

class UltraStarTempo : public ::testing::TestWithParam<Tempo> {};

TEST_P(UltraStarTempo, NotesAreDueAtTheGapPlusTheirBeats) {
    const Tempo tempo = GetParam();
    const std::string song = std::string("#TITLE:Star\n#ARTIST:Trad.\n#MP3:star.mp3\n#BPM:") +
                             tempo.bpmText + "\n#GAP:" + std::to_string(tempo.gapMs) + "\n" +
                             kNotes;
    const LyricReading reading = parseUltraStar(song);
    ASSERT_TRUE(reading.sheet) << reading.problem;
    const LyricSheet& sheet = *reading.sheet;
    EXPECT_EQ(sheet.title, "Star");
    EXPECT_EQ(sheet.artist, "Trad.");
    EXPECT_EQ(sheet.audioFile, "star.mp3");

    // A beat is a sixteenth note; BPM counts quarter notes a minute.
    const double sixteenth = 60.0 / tempo.bpm / 4.0;
    const auto at = [&](int beat) { return tempo.gapMs / 1000.0 + beat * sixteenth; };
    ASSERT_EQ(sheet.lines.size(), 3u);
    EXPECT_EQ(sheet.lines[0].text, "Twinkle twinkle");
    EXPECT_EQ(sheet.lines[1].text, "little star");
    EXPECT_EQ(sheet.lines[2].text, "How");
    EXPECT_NEAR(sheet.lines[0].start, at(0), 1e-9);
    EXPECT_NEAR(sheet.lines[1].start, at(20), 1e-9);
    EXPECT_NEAR(sheet.lines[2].start, at(40), 1e-9);
    ASSERT_EQ(sheet.lines[1].syllables.size(), 3u);
    EXPECT_NEAR(sheet.lines[1].syllables[2].start, at(24), 1e-9);
    EXPECT_NEAR(sheet.lines[1].syllables[2].end, at(32), 1e-9);
    EXPECT_EQ(sheet.lines[1].syllables[2].text, " star");
}

INSTANTIATE_TEST_SUITE_P(BpmAndGap, UltraStarTempo,
                         ::testing::Values(Tempo{"Bpm300", "300", 300.0, 0},
                                           Tempo{"CommaDecimal", "120,5", 120.5, 1500},
                                           Tempo{"PointDecimal", "410.25", 410.25, 12345},
                                           Tempo{"Spaced", " 95,125 ", 95.125, 250.5}),
                         [](const ::testing::TestParamInfo<Tempo>& info) {
                             return std::string(info.param.name);
                         });

TEST(UltraStarLyrics, RelativeModeCountsEachLineFromItsBreak) {
    // The line breaks move the count on by their second number, or by their
    // only one: the lines start at beats 10, 10 + 12 and 10 + 12 + 6.
    const LyricReading reading = parseUltraStar(
        "#BPM:200\n#GAP:1000\n#RELATIVE:yes\n"
        ": 10 4 0 one\n- 8 12\n"
        ": 10 2 0 two\n: 14 2 0  more\n- 6\n"
        ": 10 2 0 three\n");
    ASSERT_TRUE(reading.sheet) << reading.problem;
    const double sixteenth = 60.0 / 200 / 4;
    const auto& lines = reading.sheet->lines;
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_NEAR(lines[0].start, 1.0 + 10 * sixteenth, 1e-9);
    EXPECT_NEAR(lines[1].start, 1.0 + 22 * sixteenth, 1e-9);
    EXPECT_NEAR(lines[1].syllables[1].end, 1.0 + 28 * sixteenth, 1e-9);
    EXPECT_EQ(lines[1].text, "two more");
    EXPECT_NEAR(lines[2].start, 1.0 + 28 * sixteenth, 1e-9);
}

TEST(UltraStarLyrics, ADuetShowsItsFirstVoice) {
    const LyricReading reading = parseUltraStar(
        "#BPM:100\nP1\n: 0 4 0 mine\n- 8\n: 8 4 0 again\nP2\n: 2 4 0 yours\n- 6\n: 20 4 0 too\n"
        "P1\n: 30 2 0 last\nE\n");
    ASSERT_TRUE(reading.sheet) << reading.problem;
    std::vector<std::string> texts;
    for (const LyricLine& line : reading.sheet->lines) {
        texts.push_back(line.text);
    }
    EXPECT_EQ(texts, (std::vector<std::string>{"mine", "again", "last"}));
}

TEST(UltraStarLyrics, WindowsTextAndStrayLinesAreTakenInTheirStride) {
    const LyricReading reading = parseUltraStar(
        "#title:Caf\xE9\r\n#BPM:300\r\n#VIDEO:clip.avi\r\n"
        ": x 4 0 not a note\r\n: 4 4\r\n: 8 4 0 Cr\xE8me\r\n: 12 2 -3  br\xFBl\xE9"
        "e\r\n");
    ASSERT_TRUE(reading.sheet) << reading.problem;
    EXPECT_EQ(reading.sheet->title, "Café");
    ASSERT_EQ(reading.sheet->lines.size(), 1u);
    EXPECT_EQ(reading.sheet->lines[0].text, "Crème brûlée");
    EXPECT_NEAR(reading.sheet->lines[0].start, 8 * 60.0 / 300 / 4, 1e-9);
}

TEST(UltraStarLyrics, ASongWithoutTempoOrNotesIsRefused) {
    EXPECT_EQ(parseUltraStar(": 0 4 0 la\n").problem, "no usable #BPM in it");
    EXPECT_EQ(parseUltraStar("#BPM:0\n: 0 4 0 la\n").problem, "no usable #BPM in it");
    EXPECT_EQ(parseUltraStar("#BPM:fast\n: 0 4 0 la\n").problem, "no usable #BPM in it");
    EXPECT_EQ(parseUltraStar("#BPM:120\n#GAP:100\n- 4\nE\n").problem, "no notes in it");
}

}  // namespace
}  // namespace tunebox
