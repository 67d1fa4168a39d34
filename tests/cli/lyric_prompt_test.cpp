// The lyrics play and record show on a terminal: which file is chosen, the
// two rows rewritten only when the due line changes, and damaged or hostile
// files that never keep the song from starting.

#include "app/cli/lyric_prompt.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <random>

#include "core/wave_format.h"
#include "lyrics/lyric_format.h"
#include "playback/wav_length.h"
#include "support/command_runner.h"
#include "support/take_runner.h"
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

TEST(LyricPrompt, FilesThatCannotBeShownArePassedOverUnlessGiven) {
    test::TempDir dir;
    const std::string wav = put(dir, "song.wav", "");
    // Past the size limit: passed over unread, found or given, with a warning.
    const std::string huge = put(dir, "song.lrc", "[00:01.00]");
    std::filesystem::resize_file(huge, kMaxLyricTextBytes + 1);
    for (const std::string& given : {std::string(), huge}) {
        const cli::LyricChoice choice = cli::chooseLyrics(wav, given);
        EXPECT_FALSE(choice.sheet);
        EXPECT_FALSE(choice.refused);
        EXPECT_TRUE(choice.warning);
        EXPECT_EQ(choice.note, huge + ": too big for lyrics (over 1 MB); playing without them");
    }
    std::filesystem::remove(huge);

    // CD+G, even random bytes, is never read for a terminal.
    std::mt19937 random(7);
    std::string noise(24 * 300, '\0');
    for (char& byte : noise) {
        byte = static_cast<char>(random());
    }
    const std::string cdg = put(dir, "song.cdg", noise);
    const cli::LyricChoice graphics = cli::chooseLyrics(wav, "");
    EXPECT_FALSE(graphics.sheet);
    EXPECT_FALSE(graphics.refused);
    EXPECT_EQ(graphics.note, cdg + ": CD+G graphics are not drawn on a terminal");

    // The song picked to play whose notes were cut off still plays.
    const std::string cut = put(dir, "cut.txt", "#TITLE:Cut\n#MP3:song.wav\n#BPM:1");
    const cli::LyricChoice song = cli::chooseLyrics(wav, "", cut);
    EXPECT_FALSE(song.sheet);
    EXPECT_FALSE(song.refused);
    EXPECT_TRUE(cli::chooseLyrics(wav, cut).refused);

    // A pipe given with --lyrics is refused at once, not waited on.
    const std::string pipe = (dir / "pipe.lrc").string();
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_TRUE(cli::chooseLyrics(wav, pipe).refused);
}

// Through the commands on the virtual devices: each plays its song to the end.
TEST(LyricPrompt, HostileLyricsNeverKeepPlayOrRecordFromTheSong) {
    test::TakeRunner runner;
    test::synthesise(runner.dir() / "song.wav", 44100, 2, "synth 1 sine 440");
    std::ofstream(runner.dir() / "huge.lrc")
        << "[00:01.00]" << std::string(kMaxLyricTextBytes, 'a');
    std::ofstream(runner.dir() / "cut.txt") << "#TITLE:Cut\n#MP3:song.wav\n#BPM:300\n: 0 4 1 On";
    std::mt19937 random(11);
    std::string noise(24 * 3000, '\0');
    for (char& byte : noise) {
        byte = static_cast<char>(random());
    }
    std::ofstream(runner.dir() / "song.cdg", std::ios::binary) << noise;
    const std::string setting =
        "export TUNEBOX_AUDIO=virtual TUNEBOX_VIRTUAL_SPEED=5 XDG_CONFIG_HOME=\"$PWD\"\n";

    const test::RunResult huge =
        runner.runScript(setting + "\"$TUNEBOX\" play song.wav --lyrics huge.lrc");
    EXPECT_EQ(huge.status, 0) << huge.err;
    EXPECT_EQ(huge.err,
              "tunebox: huge.lrc: too big for lyrics (over 1 MB); playing without them\n");
    for (const std::string command :
         {"play cut.txt", "play song.wav", "record --accompaniment cut.txt --output take.wav",
          "record --accompaniment song.wav --lyrics cut.txt --output take2.wav"}) {
        const test::RunResult run = runner.runScript(setting + "\"$TUNEBOX\" " + command);
        EXPECT_EQ(run.status, 0) << command << ": " << run.err;
    }
    runner.expectFinishedTake("take.wav");
    uint32_t length = 0;
    ASSERT_EQ(wavGetLength((runner.dir() / "take.wav").string(), length), 1);
    EXPECT_GE(length, kNativeBytesPerSecond / 2) << "the take did not go over the song";
}

}  // namespace
}  // namespace tunebox
