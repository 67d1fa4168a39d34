// `tunebox info` (and `decode`, where it must refuse alike) as a user runs it
// on the demo tune, on every kind of accompaniment it reads, and on files it
// cannot or will not read: one line and status 2 for those.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <utility>

#include "support/command_runner.h"
#include "support/riff_bytes.h"
#include "support/scoped_environment.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

constexpr const char* kReadable = "WAV, MP3, MP2, FLAC, Ogg Vorbis, Opus, AIFF, CAF, W64 and RF64";

class CommandInfoTest : public ::testing::Test {
  protected:
    test::RunResult info(const std::string& path) {
        return test::runTunebox(dir_, "info '" + path + "'");
    }

    // Three seconds of a tone at 48 kHz, the source of every encoded file.
    const std::string& tone() {
        if (tone_.empty()) {
            tone_ = test::synthesise(dir_ / "tone.wav", 48000, 2, "synth 3 sine 440 vol 0.5");
        }
        return tone_;
    }

    std::string ffmpeg(const std::string& name, const std::string& options) {
        const std::string path = (dir_ / name).string();
        test::runTool("ffmpeg -loglevel error -y -i '" + tone() + "' " + options + " '" + path +
                      "'");
        return path;
    }

    std::string lame(const std::string& name, const std::string& options) {
        const std::string path = (dir_ / name).string();
        test::runTool("lame --quiet " + options + " '" + tone() + "' '" + path + "'");
        return path;
    }

    // The value after "key: " in info's output.
    static std::string field(const std::string& out, const std::string& key) {
        const auto at = out.find("\n" + key + ": ");
        if (at == std::string::npos) {
            return "<none>";
        }
        const auto start = at + key.size() + 3;
        return out.substr(start, out.find('\n', start) - start);
    }

    // Info and decode both refuse `path` in one line that starts with `reason`.
    void expectRefusedByInfoAndDecode(const std::string& path, const std::string& reason) {
        const std::string output = (dir_ / "out.wav").string();
        for (const std::string& command :
             {"info '" + path + "'", "decode '" + path + "' '" + output + "'"}) {
            SCOPED_TRACE(command);
            const test::RunResult run = test::runTunebox(dir_, command);
            EXPECT_EQ(run.status, 2);
            EXPECT_EQ(run.out, "");
            EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
            EXPECT_EQ(run.err.rfind("tunebox: " + path + ": " + reason, 0), 0) << run.err;
        }
    }

    test::TempDir dir_;
    std::string tone_;
};

TEST_F(CommandInfoTest, TheDemoTuneIsEightSecondsOfDirectlyReadNativePcm) {
    const std::string path = (dir_ / "demo.wav").string();
    const test::RunResult made = test::runTunebox(dir_, "tune '" + path + "'");
    ASSERT_EQ(made.status, 0) << made.err;
    EXPECT_EQ(made.err, "");

    const test::RunResult shown = info(path);
    ASSERT_EQ(shown.status, 0) << shown.err;
    EXPECT_EQ(field(shown.out, "format")
                  .rfind("tag 1, 2 channels, 44100 samples/s, 176400 bytes/s, block align 4, 16 "
                         "bits",
                         0),
              0u);
    EXPECT_EQ(field(shown.out, "reading"), "direct");
    EXPECT_EQ(field(shown.out, "length"), "1411200 bytes, 00:08:00");
}

TEST_F(CommandInfoTest, TuneReportsAnOutputThatCannotBeCreated) {
    const std::string path = (dir_ / "no" / "such" / "dir.wav").string();
    const test::RunResult run = test::runTunebox(dir_, "tune '" + path + "'");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "tunebox: " + path + ": cannot be created (No such file or directory)\n");
}

TEST_F(CommandInfoTest, ShowsKindCodecRateChannelsLengthAndTags) {
    const struct {
        std::string path, kind, codec;
    } files[] = {
        {ffmpeg("tagged.flac", "-metadata title='Blue Moon' -metadata artist='Ann Singer'"), "FLAC",
         "Signed 16 bit PCM"},
        {ffmpeg("tagged.ogg",
                "-c:a libvorbis -metadata title='Blue Moon' -metadata artist='Ann Singer'"),
         "Ogg", "Vorbis"},
        {ffmpeg("tagged.aiff", "-metadata title='Blue Moon' -metadata author='Ann Singer'"), "AIFF",
         "Signed 16 bit PCM"},
        {lame("tagged.mp3", "-b 128 --id3v1-only --tt 'Blue Moon' --ta 'Ann Singer'"), "<none>",
         "<none>"},
    };
    for (const auto& file : files) {
        SCOPED_TRACE(file.path);
        const test::RunResult shown = info(file.path);
        ASSERT_EQ(shown.status, 0) << shown.err;
        EXPECT_EQ(field(shown.out, "container"), file.kind);
        EXPECT_EQ(field(shown.out, "codec"), file.codec);
        EXPECT_EQ(field(shown.out, "title"), "Blue Moon");
        EXPECT_EQ(field(shown.out, "artist"), "Ann Singer");
        EXPECT_EQ(field(shown.out, "reading"), "converted");
    }
    // Three seconds at 48 kHz last 132,300 native frames.
    const std::string flac = info(files[0].path).out;
    EXPECT_NE(field(flac, "format").find("2 channels, 48000 samples/s"), std::string::npos);
    EXPECT_EQ(field(flac, "length"), "529200 bytes, 00:03:00");
}

// The figures themselves are the opener's, checked against mpg123 there;
// here only how the command shows them.
TEST_F(CommandInfoTest, LayerAndBitRateAreShownAsTheStreamNamesThem) {
    const std::pair<std::string, std::string> cases[] = {
        {lame("cbr.mp3", "-b 128"), "MPEG-1 Layer III, 128 kbit/s,"},
        {lame("vbr.mp3", "-V 2"), "MPEG-1 Layer III, "},
        {ffmpeg("layer2.mp2", "-c:a mp2 -b:a 192k"), "MPEG-1 Layer II, 192 kbit/s,"},
    };
    for (const auto& [path, shownAs] : cases) {
        const test::RunResult shown = info(path);
        ASSERT_EQ(shown.status, 0) << shown.err;
        EXPECT_EQ(field(shown.out, "mpeg").rfind(shownAs, 0), 0u) << field(shown.out, "mpeg");
    }
    EXPECT_NE(field(info(cases[1].first).out, "mpeg").find(" kbit/s average,"), std::string::npos);
}

// The settings file's choice travels from the command to the opener (the
// tone is at 48 kHz, so either decoder's output is resampled).
TEST_F(CommandInfoTest, TheSettingsFileChoosesTheDecoderTriedFirst) {
    const std::string path = lame("choice.mp3", "-b 128");
    const test::TempDir config;
    const test::ScopedEnvironment configDir("TUNEBOX_CONFIG_DIR", config.path().c_str());
    for (const auto& [value, decoder] :
         {std::pair{"1", "built-in"}, std::pair{"0", "system codec"}}) {
        std::ofstream(config / "Tunebox.INI") << "[MP3_DECODER]\nORIGINAL=" << value << "\n";
        EXPECT_EQ(field(info(path).out, "decoder"), std::string(decoder) + ", then resampled")
            << "ORIGINAL=" << value;
    }
}

TEST_F(CommandInfoTest, FilesThatCannotBeReadGiveOneLine) {
    const std::string missing = (dir_ / "missing.wav").string();
    const std::string text = (dir_ / "notes.mp3").string();
    test::writeFile(text, {'h', 'i', '\n'});
    const std::string wide =
        test::synthesise(dir_ / "wide.wav", 8000, 1, "synth 0.1 sine 440", "-b 24");
    // The stream information, the Vorbis identification packet and the
    // common chunk each cut or overwritten.
    const std::string flac = ffmpeg("broken.flac", "");
    const std::string ogg = ffmpeg("broken.ogg", "-c:a libvorbis");
    const std::string aiff = ffmpeg("broken.aiff", "");
    const auto flacBytes = test::readBytes(flac);
    test::writeFile(flac, test::Bytes(flacBytes.begin(), flacBytes.begin() + 20));
    auto oggBytes = test::readBytes(ogg);
    std::fill(oggBytes.begin() + 28, oggBytes.begin() + 60, 0xA5);
    test::writeFile(ogg, oggBytes);
    const auto aiffBytes = test::readBytes(aiff);
    test::writeFile(aiff, test::Bytes(aiffBytes.begin(), aiffBytes.begin() + 24));

    const std::pair<std::string, std::string> cases[] = {
        {missing, "no such file\n"},
        {dir_.path().string(), "is a directory\n"},
        {text, "neither a WAVE nor an MP3 file (no audio frame found)\n"},
        // sox writes 24-bit samples in the extensible form, which is taken as PCM.
        {wide, "bits per sample 24 is not supported (PCM: 8 or 16)\n"},
        {flac, "FLAC file cannot be read"},
        {ogg, "Ogg file cannot be read"},
        {aiff, "AIFF file cannot be read"},
    };
    for (const auto& [path, reason] : cases) {
        expectRefusedByInfoAndDecode(path, reason);
    }

    // A take cut short is shown as far as it can be, and how to mend it.
    const std::string cut = (dir_ / "cut.wav").string();
    const test::Bytes whole = test::nativeWave(test::Bytes(100));
    test::writeFile(cut, test::Bytes(whole.begin(), whole.end() - 1));
    const test::RunResult shown = info(cut);
    EXPECT_EQ(shown.status, 2);
    EXPECT_EQ(shown.out,
              "unfinished: the header says 100 bytes of audio but 99 bytes follow; run "
              "tunebox repair\n");
    EXPECT_EQ(shown.err, "tunebox: " + cut + ": damaged WAVE file\n");
}

TEST_F(CommandInfoTest, KindsNotReadAreNamedWithTheFormatsThatAre) {
    const std::pair<std::string, std::string> files[] = {
        {ffmpeg("song.m4a", "-c:a aac"), "MP4"},
        {ffmpeg("song.aac", "-c:a aac -f adts"), "ADTS AAC"},
        {ffmpeg("song.wma", "-c:a wmav2"), "WMA/ASF"},
        {ffmpeg("song.webm", "-c:a libopus"), "Matroska/WebM"},
        {ffmpeg("song.avi", "-c:a pcm_s16le"), "AVI"},
    };
    for (const auto& [path, kind] : files) {
        expectRefusedByInfoAndDecode(path,
                                     kind + " is not supported; Tunebox reads " + kReadable + "\n");
    }
    // WAVE files the reader cannot take are refused as WAVE files, not
    // re-read as MPEG frames.
    const std::string ima = (dir_ / "ima.wav").string();
    test::runTool("sox '" + tone() + "' -e ima-adpcm '" + ima + "'");
    const std::string six = test::synthesise(dir_ / "six.wav", 44100, 6, "synth 1 sine 440");
    for (const std::string& path : {ima, six}) {
        const test::RunResult shown = info(path);
        EXPECT_EQ(shown.out.find("mpeg"), std::string::npos) << path;
        if (shown.status != 0) {
            EXPECT_EQ(shown.status, 2) << path;
            EXPECT_NE(shown.err.find("unsupported"), std::string::npos) << shown.err;
        }
    }
}

}  // namespace
}  // namespace tunebox
