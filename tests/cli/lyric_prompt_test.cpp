// The lyrics play shows on a terminal: which file is chosen, and the two rows
// rewritten only when the due line changes.

#include "app/cli/lyric_prompt.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/command_runner.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

std::string put(const test::TempDir& dir, const std::string& name, const std::string& text) {
    const std::string path = (dir / name).string();
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

TEST(LyricPrompt, TheRowsAreRewrittenWhenTheDueLineChanges) {
    LyricSheet sheet;
    sheet.lines = {{1.0, "one", {}}, {2.0, "two", {}}};
    cli::LyricPrompt prompt(sheet);
    const auto rows = [](const std::string& current, const std::string& next) {
        return "\r\033[2A\033[K" + current + "\n\033[K\033[2m" + next + "\033[0m\n";
    };
    EXPECT_EQ(prompt.update(0.0), rows("", "one"));
    EXPECT_EQ(prompt.update(0.5), "");
    EXPECT_EQ(prompt.update(1.0), rows("one", "two"));
    EXPECT_EQ(prompt.update(1.9), "");
    EXPECT_EQ(prompt.update(2.0), rows("two", ""));
    EXPECT_EQ(prompt.update(0.2), rows("", "one"));
}

TEST(LyricPrompt, AGivenFileMustReadAndAFoundOneMayBeLeftOut) {
    test::TempDir dir;
    const std::string wav = put(dir, "song.wav", "");
    const cli::LyricChoice none = cli::chooseLyrics(wav, "");
    EXPECT_FALSE(none.sheet);
    EXPECT_TRUE(none.note.empty());

    const std::string found = put(dir, "song.lrc", "[00:01.00]found\n");
    const cli::LyricChoice lrc = cli::chooseLyrics(wav, "");
    ASSERT_TRUE(lrc.sheet);
    EXPECT_EQ(lrc.sheet->lines.at(0).text, "found");
    EXPECT_EQ(lrc.note, "lyrics: " + found);

    const std::string broken = put(dir, "broken.lrc", "no times\n");
    const cli::LyricChoice refused = cli::chooseLyrics(wav, broken);
    EXPECT_TRUE(refused.refused);
    EXPECT_EQ(refused.note, broken + ": no timed lyric lines in it");
    EXPECT_TRUE(cli::chooseLyrics(wav, (dir / "missing.lrc").string()).refused);
    EXPECT_TRUE(cli::chooseLyrics(wav, wav).refused);
}

TEST(LyricPrompt, PlayRefusesLyricsItCannotShowBeforeItPlays) {
    test::TempDir dir;
    const std::string song = put(dir, "song.txt", "#BPM:100\n: 0 4 0 la\n");
    const test::RunResult noAudio = test::runTunebox(dir, "play '" + song + "'");
    EXPECT_EQ(noAudio.status, 2);
    EXPECT_EQ(noAudio.err,
              "tunebox: " + song + ": an UltraStar song that names no audio file (#MP3)\n");

    const std::string wav = test::synthesise(dir / "tone.wav", 44100, 2, "synth 1 sine 440");
    const std::string broken = put(dir, "broken.lrc", "no times\n");
    const test::RunResult badLyrics =
        test::runTunebox(dir, "play '" + wav + "' --lyrics '" + broken + "'");
    EXPECT_EQ(badLyrics.status, 2);
    EXPECT_EQ(badLyrics.err, "tunebox: " + broken + ": no timed lyric lines in it\n");
}

}  // namespace
}  // namespace tunebox
