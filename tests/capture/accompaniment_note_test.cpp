// The accompaniment noted in a voice file: read back as written, hostile
// texts refused, kept by a file cut off before its close, and the file still
// a plain WAV to our reader and to sox.
#include <gtest/gtest.h>

#include "capture/accompaniment_note.h"
#include "playback/wav_length.h"
#include "playback/wav_repair.h"
#include "support/command_runner.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

std::string textOf(const NoteChunk& chunk) {
    return {chunk.bytes.begin(), chunk.bytes.end()};
}

TEST(AccompanimentNoteTest, AnyPathSurvivesTheRoundTrip) {
    for (const std::string path : {"/songs/a.wav", "/odd/start=1\nlength=2\npath=x.mp3", "/é ü"}) {
        const AccompanimentNote note{path, 4 * 44100, 4294967292u, path.size() % 2 == 0,
                                     KeyTempo{-6, 50, 70, true}};
        EXPECT_EQ(decodeAccompanimentNote(textOf(encodeAccompanimentNote(note))), note) << path;
    }
}

TEST(AccompanimentNoteTest, TextsItDidNotWriteAreRefused) {
    const std::string written =
        "start=1\nlength=2\nbuiltin=0\nkey=-3\ncents=0\ntempo=90\nformants=0\npath=/a";
    ASSERT_TRUE(decodeAccompanimentNote(written));
    const auto with = [&](const std::string& from, const std::string& to) {
        std::string text = written;
        return text.replace(text.find(from), from.size(), to);
    };
    for (const std::string& text :
         {std::string(), with("/a", ""), with("path=/a", ""), with("start=1\n", ""),
          with("start=1", "start="), with("start=1", "start=-1"),
          with("start=1", "start=4294967296"), with("start=1", "start=1x"), with("builtin=0\n", ""),
          with("builtin=0", "builtin=2"), with("key=-3", "key=-7"), with("cents=0", "cents=51"),
          with("tempo=90", "tempo=69"), with("tempo=90", "tempo=131"), with("formants=0\n", ""),
          with("0\npath", "0path")}) {
        EXPECT_FALSE(decodeAccompanimentNote(text)) << text;
    }
}

TEST(AccompanimentNoteTest, ANoteSurvivesACutAndTheFileReadsAsItsAudioAlone) {
    const test::TempDir dir;
    const std::string path = (dir / "voice.wav").string();
    WaveWriter writer;
    wavResetWriter(writer);
    writer.refreshBytes = 4 * 500;
    const AccompanimentNote note{"/songs/odd length.mp3", 8, 12, true};
    const NoteChunk chunk = encodeAccompanimentNote(note);
    ASSERT_EQ(wavCreateFile(path, writer, &chunk), 1);
    const std::vector<uint8_t> samples(4 * 1000, 7);
    ASSERT_EQ(wavWrite(writer, samples.data(), static_cast<uint32_t>(samples.size())), 1);
    ASSERT_EQ(wavWrite(writer, samples.data(), 6), 1);  // a frame and a half after the refresh
    wavResetWriter(writer);                             // the process dies: no close

    EXPECT_EQ(readAccompanimentNote(path), note);
    ASSERT_TRUE(repairWav(path).repaired);
    EXPECT_EQ(readAccompanimentNote(path), note);
    uint32_t length = 0;
    ASSERT_EQ(wavGetLength(path, length), 1);
    EXPECT_EQ(length, samples.size() + 4);
    const std::string frames = (dir / "frames.txt").string();
    ASSERT_EQ(test::run("sox --i -s '" + path + "' >'" + frames + "' 2>&1"), 0);
    EXPECT_EQ(test::readText(frames), "1001\n");
    EXPECT_FALSE(readAccompanimentNote((dir / "absent.wav").string()));
}

}  // namespace
}  // namespace tunebox
