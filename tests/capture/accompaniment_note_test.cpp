// The accompaniment noted at the end of a voice file: read back as written,
// hostile texts refused, and the file still a plain WAV to our reader and to
// sox.
#include <gtest/gtest.h>

#include "capture/accompaniment_note.h"
#include "playback/wav_length.h"
#include "support/command_runner.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

std::string textOf(const TrailingChunk& chunk) {
    return {chunk.bytes.begin(), chunk.bytes.end()};
}

TEST(AccompanimentNoteTest, AnyPathSurvivesTheRoundTrip) {
    for (const std::string path : {"/songs/a.wav", "/odd/start=1\nlength=2\npath=x.mp3", "/é ü"}) {
        const AccompanimentNote note{path, 4 * 44100, 4294967292u};
        EXPECT_EQ(decodeAccompanimentNote(textOf(encodeAccompanimentNote(note))), note) << path;
    }
}

TEST(AccompanimentNoteTest, TextsItDidNotWriteAreRefused) {
    for (const std::string text :
         {"", "start=1\nlength=2\npath=", "start=1\nlength=2\n", "length=2\nstart=1\npath=/a",
          "start=\nlength=2\npath=/a", "start=-1\nlength=2\npath=/a",
          "start=4294967296\nlength=2\npath=/a", "start=1x\nlength=2\npath=/a", "start=1",
          "start=1\nlength=2path=/a"}) {
        EXPECT_FALSE(decodeAccompanimentNote(text)) << text;
    }
}

TEST(AccompanimentNoteTest, ANotedWavReadsAsItsAudioAloneHereAndInSox) {
    const test::TempDir dir;
    const std::string path = (dir / "voice.wav").string();
    WaveWriter writer;
    wavResetWriter(writer);
    ASSERT_EQ(wavCreateFile(path, writer), 1);
    const std::vector<uint8_t> samples(4 * 1000, 7);
    ASSERT_EQ(wavWrite(writer, samples.data(), static_cast<uint32_t>(samples.size())), 1);
    const AccompanimentNote note{"/songs/odd length.mp3", 8, 12};
    const TrailingChunk chunk = encodeAccompanimentNote(note);
    ASSERT_EQ(wavCloseFile(writer, &chunk), 1);

    EXPECT_EQ(readAccompanimentNote(path), note);
    uint32_t length = 0;
    ASSERT_EQ(wavGetLength(path, length), 1);
    EXPECT_EQ(length, samples.size());
    const std::string frames = (dir / "frames.txt").string();
    ASSERT_EQ(test::run("sox --i -s '" + path + "' >'" + frames + "' 2>&1"), 0);
    EXPECT_EQ(test::readText(frames), "1000\n");
    EXPECT_FALSE(readAccompanimentNote((dir / "absent.wav").string()));
}

}  // namespace
}  // namespace tunebox
