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
#include "support/test_files.h"

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
    for (int file = 0; file < 16; ++file) {
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
    const struct {
        std::string name, command, reason;
    } named[] = {
        {"tone.flac", "sox '" + wav_ + "' '" + (dir_ / "tone.flac").string() + "'", "FLAC"},
        {"tone.aiff", "sox '" + wav_ + "' '" + (dir_ / "tone.aiff").string() + "'", "AIFF"},
        {"tone.aac",
         "ffmpeg -loglevel error -y -i '" + wav_ + "' -c:a aac -f adts '" +
             (dir_ / "tone.aac").string() + "'",
         "ADTS AAC"},
    };
    for (const auto& format : named) {
        const std::string path = encode(format.name, format.command);
        const test::RunResult shown = info(path);
        EXPECT_EQ(shown.status, 2) << path;
        EXPECT_EQ(shown.err, "tunebox: " + path + ": " + format.reason + " is not supported\n");
    }
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

TEST_F(CommandInfoMp3Test, LayerBitRateAndLengthAgreeWithFfprobeAndMpg123) {
    const std::string cbr = lame("cbr.mp3", "-b 128");
    const std::string vbr = lame("vbr.mp3", "-V 2");
    const std::string layer2 =
        encode("layer2.mp2", "ffmpeg -loglevel error -y -i '" + wav_ + "' -c:a mp2 -b:a 192k '" +
                                 (dir_ / "layer2.mp2").string() + "'");
    const struct {
        std::string path, layer, rate;
    } cases[] = {
        {cbr, "Layer III", "128 kbit/s,"},
        {vbr, "Layer III", ffprobe(vbr, "stream=bit_rate")},
        {layer2, "Layer II", "192 kbit/s,"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        const test::RunResult shown = info(c.path);
        ASSERT_EQ(shown.status, 0) << shown.err;
        const std::string mpeg = field(shown.out, "mpeg");
        EXPECT_EQ(mpeg.rfind("MPEG-1 " + c.layer + ", ", 0), 0u) << mpeg;
        // The gapless decode of mpg123, in native-PCM bytes at 44.1 kHz.
        const std::string decoded = firstLineOf("mpg123 -q --stereo -s '" + c.path + "' | wc -c");
        EXPECT_EQ(field(shown.out, "length").substr(0, field(shown.out, "length").find(' ')),
                  decoded);
        if (c.path == vbr) {
            const long average = (std::stol(c.rate) + 500) / 1000;
            EXPECT_NE(mpeg.find(std::to_string(average) + " kbit/s average,"), std::string::npos)
                << mpeg << " against " << c.rate;
        } else {
            EXPECT_NE(mpeg.find(c.rate), std::string::npos) << mpeg;
        }
    }
}

TEST_F(CommandInfoMp3Test, TagsAgreeWithFfprobe) {
    const std::string v1 = lame("v1.mp3", "-b 128 --id3v1-only --tt Title1 --ta Artist1");
    // An ID3v2.3 tag whose UTF-16 title was unsynchronised (0x00 after each
    // 0xFF); the frame's size counts the bytes as stored.
    const test::Bytes frameData{1, 0xFF, 0x00, 0xFE, 'U', 0, 'T', 0, 0xFF, 0x00, 0x30};
    test::Bytes tag{'I', 'D', '3', 3, 0, 0x80, 0, 0, 0, 0};
    test::appendText(tag, "TIT2");
    tag.insert(tag.end(), {0, 0, 0, static_cast<uint8_t>(frameData.size()), 0, 0});
    tag.insert(tag.end(), frameData.begin(), frameData.end());
    tag[9] = static_cast<uint8_t>(tag.size() - 10);
    const std::string plain = lame("plain.mp3", "-b 128");
    test::Bytes unsynced = tag;
    const test::Bytes audio = test::readBytes(plain);
    unsynced.insert(unsynced.end(), audio.begin(), audio.end());
    const std::string tagged = (dir_ / "unsync.mp3").string();
    test::writeFile(tagged, unsynced);

    for (const std::string& path : {v1, tagged}) {
        SCOPED_TRACE(path);
        const test::RunResult shown = info(path);
        ASSERT_EQ(shown.status, 0) << shown.err;
        EXPECT_EQ(field(shown.out, "title"), ffprobe(path, "format_tags=title"));
    }
    EXPECT_EQ(field(info(tagged).out, "title"), "UT\u30FF");
    EXPECT_EQ(field(info(v1).out, "artist"), "Artist1");
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
