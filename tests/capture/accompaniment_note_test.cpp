// The accompaniment noted in a voice file: read back as written, hostile
// texts refused, kept by a file cut off before its close, the changes of key
// and tempo added at the close, and the file still a plain WAV to our reader
// and to sox.
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

TEST(AccompanimentNoteTest, ChangeListsItDidNotWriteAreRefused) {
    const std::string written =
        "block=4\nkey=2\ncents=0\ntempo=100\nformants=0\n"
        "block=7\nkey=0\ncents=0\ntempo=115\nformants=1\n";
    const KeyTempoChanges changes{{4, {.semitones = 2}},
                                  {7, {.tempoPercent = 115, .preserveFormants = true}}};
    EXPECT_EQ(decodeKeyTempoChanges(written), changes);
    EXPECT_EQ(decodeKeyTempoChanges(textOf(encodeKeyTempoChanges(changes))), changes);
    const auto with = [&](const std::string& from, const std::string& to) {
        std::string text = written;
        return text.replace(text.find(from), from.size(), to);
    };
    for (const std::string& text :
         {with("block=7", "block=3"), with("block=4", "block=-4"), with("block=4\n", ""),
          with("key=2", "key=7"), with("tempo=115", "tempo=131"),
          with("formants=1\n", "formants=1"), with("cents=0\nt", "t"), written + "x"}) {
        EXPECT_FALSE(decodeKeyTempoChanges(text)) << text;
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

// The changes follow the audio, written at the close: they come back with
// the note, and the file is as finished, and as long, as one without them.
TEST(AccompanimentNoteTest, ChangesWrittenAtTheCloseComeBackWithTheNote) {
    const test::TempDir dir;
    const std::string path = (dir / "voice.wav").string();
    WaveWriter writer;
    wavResetWriter(writer);
    const AccompanimentNote note{"/songs/a.wav", 0, 4000, false, {.semitones = -1}};
    const NoteChunk start = encodeAccompanimentNote(note);
    ASSERT_EQ(wavCreateFile(path, writer, &start), 1);
    const std::vector<uint8_t> samples(4 * 1000, 7);
    ASSERT_EQ(wavWrite(writer, samples.data(), static_cast<uint32_t>(samples.size())), 1);
    const KeyTempoChanges changes{{3, {.semitones = 2}}, {3, {.tempoPercent = 80}}, {9, {}}};
    const NoteChunk moved = encodeKeyTempoChanges(changes);
    ASSERT_EQ(wavCloseFile(writer, &moved), 1);

    auto read = readAccompanimentNote(path);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->changes, changes);
    read->changes.clear();
    EXPECT_EQ(read, note);
    EXPECT_EQ(inspectWav(path).condition, WavCondition::kFinished) << inspectWav(path).detail;
    EXPECT_TRUE(repairWav(path).alreadyFinished);
    uint32_t length = 0;
    ASSERT_EQ(wavGetLength(path, length), 1);
    EXPECT_EQ(length, samples.size());
    const std::string frames = (dir / "frames.txt").string();
    ASSERT_EQ(test::run("sox --i -s '" + path + "' >'" + frames + "' 2>&1"), 0);
    EXPECT_EQ(test::readText(frames), "1000\n");
}

}  // namespace
}  // namespace tunebox
