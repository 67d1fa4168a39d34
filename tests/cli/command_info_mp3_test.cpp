// `tunebox info` on MP3 files and on what only looks like one, against what
// ffprobe and mpg123 make of the same files.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <utility>

#include "support/command_runner.h"
#include "support/riff_bytes.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

// The first line of a shell command's output, without its newline.
std::string firstLineOf(const std::string& command) {
    std::FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return "";
    }
    std::string line;
    for (int c = std::fgetc(pipe); c != EOF && c != '\n'; c = std::fgetc(pipe)) {
        line += static_cast<char>(c);
    }
    pclose(pipe);
    return line;
}

class CommandInfoMp3Test : public ::testing::Test {
  protected:
    void SetUp() override {
        wav_ = (dir_ / "tone.wav").string();
        ASSERT_EQ(test::run("sox -n -r 44100 -c 2 -b 16 '" + wav_ + "' synth 6 sine 440 vol 0.5"),
                  0);
    }

    std::string encode(const std::string& name, const std::string& command) {
        const std::string path = (dir_ / name).string();
        EXPECT_EQ(test::run(command + " >/dev/null 2>&1"), 0) << command;
        return path;
    }

    std::string lame(const std::string& name, const std::string& options) {
        return encode(
            name, "lame --quiet " + options + " '" + wav_ + "' '" + (dir_ / name).string() + "'");
    }

    test::RunResult info(const std::string& path) {
        return test::runTunebox(dir_, "info '" + path + "'");
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

    std::string ffprobe(const std::string& path, const std::string& entry) {
        return firstLineOf("ffprobe -v error -show_entries " + entry + " -of default=nw=1:nk=1 '" +
                           path + "'");
    }

    test::TempDir dir_;
    std::string wav_;
};

TEST_F(CommandInfoMp3Test, RandomBytesAreRefusedByInfoAndDecodeWhateverTheirName) {
    std::mt19937 random(2026);
    std::uniform_int_distribution<int> byte(0, 255);
    for (int file = 0; file < 2; ++file) {
        test::Bytes bytes(1000);
        for (auto& b : bytes) {
            b = static_cast<uint8_t>(byte(random));
        }
        const std::string path =
            (dir_ / ("x" + std::to_string(file) + (file % 2 == 0 ? ".wav" : ".mp3"))).string();
        test::writeFile(path, bytes);
        SCOPED_TRACE(path);
        const test::RunResult shown = info(path);
        EXPECT_EQ(shown.status, 2);
        EXPECT_EQ(shown.out, "");
        EXPECT_EQ(shown.err,
                  "tunebox: " + path + ": neither a WAVE nor an MP3 file (no audio frame found)\n");
        const std::string out = (dir_ / "out.wav").string();
        const test::RunResult decoded =
            test::runTunebox(dir_, "decode '" + path + "' '" + out + "'");
        EXPECT_EQ(decoded.status, 2);
        EXPECT_EQ(std::count(decoded.err.begin(), decoded.err.end(), '\n'), 1);
    }
}

TEST_F(CommandInfoMp3Test, OtherFormatsAreRefusedByNameAndNeverShownAsMpeg) {
    const std::string aac =
        encode("tone.aac", "ffmpeg -loglevel error -y -i '" + wav_ + "' -c:a aac -f adts '" +
                               (dir_ / "tone.aac").string() + "'");
    const test::RunResult shown = info(aac);
    EXPECT_EQ(shown.status, 2);
    EXPECT_EQ(shown.err, "tunebox: " + aac +
                             ": ADTS AAC is not supported; Tunebox reads WAV, MP3, MP2, FLAC, "
                             "Ogg Vorbis, Opus, AIFF, CAF, W64 and RF64\n");
    // WAVE files the reader cannot take are refused as WAVE files, not
    // re-read as MPEG frames.
    const std::string ima =
        encode("ima.wav", "sox '" + wav_ + "' -e ima-adpcm '" + (dir_ / "ima.wav").string() + "'");
    const std::string six =
        encode("six.wav",
               "sox -n -r 44100 -c 6 -b 16 '" + (dir_ / "six.wav").string() + "' synth 1 sine 440");
    for (const std::string& path : {ima, six}) {
        const test::RunResult shown = info(path);
        EXPECT_EQ(shown.out.find("mpeg"), std::string::npos) << path;
        if (shown.status != 0) {
            EXPECT_EQ(shown.status, 2) << path;
            EXPECT_NE(shown.err.find("unsupported"), std::string::npos) << shown.err;
        }
    }
}

// The figures themselves are the opener's, checked against mpg123 there;
// here only how the command shows them.
TEST_F(CommandInfoMp3Test, LayerAndBitRateAreShownAsTheStreamNamesThem) {
    const std::string layer2 =
        encode("layer2.mp2", "ffmpeg -loglevel error -y -i '" + wav_ + "' -c:a mp2 -b:a 192k '" +
                                 (dir_ / "layer2.mp2").string() + "'");
    const std::pair<std::string, std::string> cases[] = {
        {lame("cbr.mp3", "-b 128"), "MPEG-1 Layer III, 128 kbit/s,"},
        {lame("vbr.mp3", "-V 2"), "MPEG-1 Layer III, "},
        {layer2, "MPEG-1 Layer II, 192 kbit/s,"},
    };
    for (const auto& [path, shownAs] : cases) {
        const test::RunResult shown = info(path);
        ASSERT_EQ(shown.status, 0) << shown.err;
        EXPECT_EQ(field(shown.out, "mpeg").rfind(shownAs, 0), 0u) << field(shown.out, "mpeg");
    }
    EXPECT_NE(field(info(cases[1].first).out, "mpeg").find(" kbit/s average,"), std::string::npos);
}

// How tags are read, unsynchronised ones included, the tag reader's tests
// show; here that the command shows what it read.
TEST_F(CommandInfoMp3Test, TagsAgreeWithFfprobe) {
    const std::string path = lame("v1.mp3", "-b 128 --id3v1-only --tt Title1 --ta Artist1");
    const test::RunResult shown = info(path);
    ASSERT_EQ(shown.status, 0) << shown.err;
    EXPECT_EQ(field(shown.out, "title"), ffprobe(path, "format_tags=title"));
    EXPECT_EQ(field(shown.out, "artist"), "Artist1");
}

// The settings file's choice travels from the command to the opener.
TEST_F(CommandInfoMp3Test, TheSettingsFileChoosesTheDecoderTriedFirst) {
    const std::string path = lame("choice.mp3", "-b 128");
    const test::TempDir config;
    setenv("TUNEBOX_CONFIG_DIR", config.path().c_str(), 1);
    for (const auto& [value, decoder] :
         {std::pair{"1", "built-in"}, std::pair{"0", "system codec"}}) {
        std::ofstream(config / "Tunebox.INI") << "[MP3_DECODER]\nORIGINAL=" << value << "\n";
        EXPECT_EQ(field(info(path).out, "decoder"), decoder) << "ORIGINAL=" << value;
    }
    unsetenv("TUNEBOX_CONFIG_DIR");
}

}  // namespace
}  // namespace tunebox
