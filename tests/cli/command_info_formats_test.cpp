// `tunebox info` and `decode` on the formats read through libsndfile: what
// the file is and says about itself, and one line with status 2 for files
// that cannot be read or are of a kind Tunebox does not read.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "support/command_runner.h"
#include "support/riff_bytes.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

constexpr const char* kReadable = "WAV, MP3, MP2, FLAC, Ogg Vorbis, Opus, AIFF, CAF, W64 and RF64";

class CommandInfoFormatsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        wav_ = test::synthesise(dir_ / "tone.wav", 48000, 2, "synth 3 sine 440 vol 0.5");
    }

    std::string ffmpeg(const std::string& name, const std::string& options) {
        const std::string path = (dir_ / name).string();
        test::runTool("ffmpeg -loglevel error -y -i '" + wav_ + "' " + options + " '" + path + "'");
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

    void expectOneLineRefusal(const std::string& path, const std::string& reasonStart) {
        const std::string output = (dir_ / "out.wav").string();
        for (const std::string& command :
             {"info '" + path + "'", "decode '" + path + "' '" + output + "'"}) {
            SCOPED_TRACE(command);
            const test::RunResult run = test::runTunebox(dir_, command);
            EXPECT_EQ(run.status, 2);
            EXPECT_EQ(run.out, "");
            EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
            EXPECT_EQ(run.err.rfind("tunebox: " + path + ": " + reasonStart, 0), 0) << run.err;
        }
    }

    test::TempDir dir_;
    std::string wav_;
};

TEST_F(CommandInfoFormatsTest, ShowsKindCodecRateChannelsLengthAndTags) {
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
    };
    for (const auto& file : files) {
        SCOPED_TRACE(file.path);
        const test::RunResult shown = test::runTunebox(dir_, "info '" + file.path + "'");
        ASSERT_EQ(shown.status, 0) << shown.err;
        EXPECT_EQ(field(shown.out, "container"), file.kind);
        EXPECT_EQ(field(shown.out, "codec"), file.codec);
        EXPECT_EQ(field(shown.out, "title"), "Blue Moon");
        EXPECT_EQ(field(shown.out, "artist"), "Ann Singer");
        EXPECT_NE(field(shown.out, "format").find("2 channels, 48000 samples/s"),
                  std::string::npos);
        EXPECT_EQ(field(shown.out, "reading"), "converted");
        // Three seconds at 48 kHz last 132,300 native frames.
        EXPECT_EQ(field(shown.out, "length"), "529200 bytes, 00:03:00");
    }
}

TEST_F(CommandInfoFormatsTest, FilesWhoseHeadersAreBrokenGiveOneLine) {
    const std::string flac = ffmpeg("broken.flac", "");
    const std::string ogg = ffmpeg("broken.ogg", "-c:a libvorbis");
    const std::string aiff = ffmpeg("broken.aiff", "");
    // The stream information, the Vorbis identification packet and the
    // common chunk each cut or overwritten.
    const auto flacBytes = test::readBytes(flac);
    test::writeFile(flac, test::Bytes(flacBytes.begin(), flacBytes.begin() + 20));
    auto oggBytes = test::readBytes(ogg);
    std::fill(oggBytes.begin() + 28, oggBytes.begin() + 60, 0xA5);
    test::writeFile(ogg, oggBytes);
    const auto aiffBytes = test::readBytes(aiff);
    test::writeFile(aiff, test::Bytes(aiffBytes.begin(), aiffBytes.begin() + 24));

    expectOneLineRefusal(flac, "FLAC file cannot be read");
    expectOneLineRefusal(ogg, "Ogg file cannot be read");
    expectOneLineRefusal(aiff, "AIFF file cannot be read");
}

TEST_F(CommandInfoFormatsTest, KindsNotReadAreNamedWithTheFormatsThatAre) {
    const std::pair<std::string, std::string> files[] = {
        {ffmpeg("song.m4a", "-c:a aac"), "MP4"},
        {ffmpeg("song.wma", "-c:a wmav2"), "WMA/ASF"},
        {ffmpeg("song.webm", "-c:a libopus"), "Matroska/WebM"},
        {ffmpeg("song.avi", "-c:a pcm_s16le"), "AVI"},
    };
    for (const auto& [path, kind] : files) {
        expectOneLineRefusal(path, kind + " is not supported; Tunebox reads " + kReadable);
    }
}

}  // namespace
}  // namespace tunebox
