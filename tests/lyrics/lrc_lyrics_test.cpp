// LRC files as singers' editors write them: plain and enhanced, with header
// tags, offsets and lines sung more than once.

#include "lyrics/lrc_lyrics.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tunebox {
namespace {

struct Expected {
    double start;
    std::string text;
};

void expectLines(const LyricReading& reading, const std::vector<Expected>& expected) {
    ASSERT_TRUE(reading.sheet) << reading.problem;
    ASSERT_EQ(reading.sheet->lines.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(reading.sheet->lines[i].start, expected[i].start, 1e-9) << "line " << i;
        EXPECT_EQ(reading.sheet->lines[i].text, expected[i].text) << "line " << i;
    }
}

TEST(LrcLyrics, LinesWithSeveralTagsAreDueOncePerTagInTimeOrder) {
    const LyricReading reading = parseLrc(
        "[ti: Lighthouse ]\r\n[ar:The Keepers]\r\n[al:ignored]\r\n"
        "[00:12.50]First light\r\n"
        "[01:02.25][00:30.00] [02:00]Chorus, sung three times\r\n"
        "not a lyric line\r\n"
        "[00:20.5]  Tenth of a second  \r\n"
        "[00:45:75]Colon before the hundredths\r\n"
        "[100:00.000]After a hundred minutes\r\n"
        "[00:50.00]\r\n");
    expectLines(reading, {{12.5, "First light"},
                          {20.5, "Tenth of a second"},
                          {30.0, "Chorus, sung three times"},
                          {45.75, "Colon before the hundredths"},
                          {50.0, ""},
                          {62.25, "Chorus, sung three times"},
                          {120.0, "Chorus, sung three times"},
                          {6000.0, "After a hundred minutes"}});
    EXPECT_EQ(reading.sheet->title, "Lighthouse");
    EXPECT_EQ(reading.sheet->artist, "The Keepers");
}

TEST(LrcLyrics, APositiveOffsetShowsLinesEarlierAndANegativeOneLater) {
    const std::string lines = "[00:00.20]Opening\n[00:10.00]Second\n";
    // +500 ms: half a second earlier, never before the start.
    expectLines(parseLrc("[offset:+500]\n" + lines), {{0.0, "Opening"}, {9.5, "Second"}});
    expectLines(parseLrc(lines + "[offset:-1250]\n"), {{1.45, "Opening"}, {11.25, "Second"}});
    expectLines(parseLrc("[offset:soon]\n" + lines), {{0.2, "Opening"}, {10.0, "Second"}});
}

TEST(LrcLyrics, WordTimesBecomeSyllablesThatMoveWithEachTagOfTheLine) {
    const LyricReading reading = parseLrc(
        "[offset:100]\n"
        "[00:10.00][00:40.00]<00:10.00>Hold <00:10.50>on <00:11.25>tight<00:12.00>\n"
        "[00:20.00]Lead in <00:20.40>then <00:21.00>a < b<00:22.00> last\n");
    ASSERT_TRUE(reading.sheet) << reading.problem;
    const auto& lines = reading.sheet->lines;
    ASSERT_EQ(lines.size(), 3u);
    struct Word {
        double start, end;
        const char* text;
    };
    const auto expectWords = [](const LyricLine& line, const std::vector<Word>& words) {
        ASSERT_EQ(line.syllables.size(), words.size()) << line.text;
        for (std::size_t i = 0; i < words.size(); ++i) {
            EXPECT_NEAR(line.syllables[i].start, words[i].start, 1e-9) << line.text << " " << i;
            EXPECT_NEAR(line.syllables[i].end, words[i].end, 1e-9) << line.text << " " << i;
            EXPECT_EQ(line.syllables[i].text, words[i].text);
        }
    };
    EXPECT_EQ(lines[0].text, "Hold on tight");
    expectWords(lines[0], {{9.9, 10.4, "Hold "}, {10.4, 11.15, "on "}, {11.15, 11.9, "tight"}});
    // The text before the first word tag is sung from the line's start, and
    // the last word lasts until the next line is due.
    EXPECT_EQ(lines[1].text, "Lead in then a < b last");
    expectWords(lines[1], {{19.9, 20.3, "Lead in "},
                           {20.3, 20.9, "then "},
                           {20.9, 21.9, "a < b"},
                           {21.9, 39.9, " last"}});
    EXPECT_NEAR(lines[2].start, 39.9, 1e-9);
    expectWords(lines[2], {{39.9, 40.4, "Hold "}, {40.4, 41.15, "on "}, {41.15, 41.9, "tight"}});
}

TEST(LrcLyrics, BracketsAfterTheTimeTagsAreWords) {
    expectLines(parseLrc("[00:01.00][Chorus] la la [x]\n[00:02.00]<not a time>\n"),
                {{1.0, "[Chorus] la la [x]"}, {2.0, "<not a time>"}});
}

TEST(LrcLyrics, TextIsReadAsUtf8WithOrWithoutAMarkElseAsWindowsText) {
    expectLines(parseLrc("\xEF\xBB\xBF[00:01.00]Gr\xC3\xBC\xC3\x9F"
                         "e"),
                {{1.0, "Grüße"}});
    expectLines(parseLrc("[00:01.00]Caf\xE9 \x93quoted\x94 \x80"), {{1.0, "Café “quoted” €"}});
    std::string utf16 = "\xFF\xFE";
    for (const char c : std::string("[00:01.00]\xE9")) {
        utf16 += {c, '\0'};
    }
    expectLines(parseLrc(utf16), {{1.0, "é"}});
}

TEST(LrcLyrics, AFileWithoutTimedLinesIsRefused) {
    for (const char* text : {"", "[ti:Only a title]\n[ar:Nobody]\n", "plain words\n[00:1x.00]no\n",
                             "[0:60.00]sixty seconds is no second\n"}) {
        const LyricReading reading = parseLrc(text);
        EXPECT_FALSE(reading.sheet) << text;
        EXPECT_EQ(reading.problem, "no timed lyric lines in it");
    }
}

}  // namespace
}  // namespace tunebox
