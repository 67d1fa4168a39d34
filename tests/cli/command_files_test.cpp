// Files in and files out as a user meets them: a command never writes over
// its own input, never leaves a half-written file in place of a good one,
// refuses what it cannot read (a pipe without a writer, a missing file, a
// file without audio) in one line, and writes a WAV to standard output or a
// device without asking for --overwrite.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "support/take_runner.h"

namespace tunebox {
namespace {

constexpr const char* kVirtual = "export TUNEBOX_AUDIO=virtual TUNEBOX_VIRTUAL_SPEED=10\n";
constexpr const char* kSongMp3 =
    "sox -n -r 44100 -c 2 -b 16 song.wav synth 1 sine 440\nlame --quiet song.wav song.mp3\n";

class CommandFilesTest : public ::testing::Test, protected test::TakeRunner {
  protected:
    test::Bytes file(const std::string& name) { return test::readBytes(dir() / name); }

    // Nothing but the named files is left in the folder: no staging file.
    void expectOnly(std::vector<std::string> names) {
        names.insert(names.end(), {"script.sh", "stdout.txt", "stderr.txt"});
        for (const auto& entry : std::filesystem::directory_iterator(dir())) {
            const std::string name = entry.path().filename().string();
            EXPECT_NE(std::find(names.begin(), names.end(), name), names.end()) << name;
        }
    }
};

TEST_F(CommandFilesTest, EveryWriterRefusesItsOwnInputAndTouchesNothing) {
    ASSERT_EQ(runScript(std::string(kSongMp3) + "ln -s song.wav link.wav").status, 0);
    const test::Bytes wav = file("song.wav");
    const test::Bytes mp3 = file("song.mp3");
    for (const std::string command :
         {"decode song.wav song.wav", "decode song.mp3 song.mp3", "decode song.wav link.wav",
          "decode song.wav - >>song.wav", "fx song.wav link.wav", "fx song.mp3 song.mp3",
          "record --accompaniment song.wav --output link.wav"}) {
        SCOPED_TRACE(command);
        const auto run = runScript(std::string(kVirtual) + "timeout 20 \"$TUNEBOX\" " + command);
        EXPECT_EQ(run.status, 2);
        EXPECT_NE(run.err.find("is the input file"), std::string::npos) << run.err;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        EXPECT_EQ(file("song.wav"), wav);
        EXPECT_EQ(file("song.mp3"), mp3);
    }
    expectOnly({"song.wav", "song.mp3", "link.wav"});
}

TEST_F(CommandFilesTest, AFailedDecodeLeavesTheExistingOutputAsItWas) {
    ASSERT_EQ(runScript(std::string(kSongMp3) + "echo not audio >junk.wav\n"
                                                "sox -n -r 44100 -c 2 -b 16 empty.wav trim 0 0")
                  .status,
              0);
    const test::Bytes good = file("song.wav");
    struct Case {
        std::string setUp;
        std::string command;
    };
    // The last one runs out of room: a file may grow to 20 blocks of 512
    // bytes, and the signal that would kill the process is ignored.
    for (const auto& [setUp, command] :
         {Case{"", "decode junk.wav song.wav"}, Case{"", "decode missing.wav song.wav"},
          Case{"", "decode empty.wav song.wav --overwrite"},
          Case{"", "fx junk.wav song.wav --overwrite"},
          Case{"ulimit -f 20; trap '' XFSZ", "decode song.mp3 song.wav --overwrite"}}) {
        SCOPED_TRACE(command);
        const auto run = runScript(setUp + "\nexec \"$TUNEBOX\" " + command);
        EXPECT_NE(run.status, 0);
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        EXPECT_EQ(file("song.wav"), good);
    }
    expectOnly({"song.wav", "song.mp3", "junk.wav", "empty.wav"});

    // A good decode replaces it, through a link, keeping the link.
    const auto run = runScript(
        "ln -s song.wav link.wav\n"
        "exec \"$TUNEBOX\" decode song.mp3 link.wav --overwrite");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(std::filesystem::is_symlink(dir() / "link.wav"));
    EXPECT_NE(file("song.wav"), good);
    EXPECT_EQ(test::loadLe32At(file("song.wav"), 24), 44100u);
}

TEST_F(CommandFilesTest, APipeWithoutAWriterIsRefusedAtOnce) {
    ASSERT_EQ(runScript("mkfifo pipe.wav").status, 0);
    for (const std::string command :
         {"info pipe.wav", "decode pipe.wav out.wav", "play pipe.wav", "fx pipe.wav out.wav",
          "record --accompaniment pipe.wav --output out.wav"}) {
        SCOPED_TRACE(command);
        // A hang would end at the timeout with status 124.
        const auto run = runScript(std::string(kVirtual) + "timeout 20 \"$TUNEBOX\" " + command);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.err, "tunebox: pipe.wav: not a regular file (a pipe, socket or device)\n");
    }
    expectOnly({"pipe.wav"});
}

TEST_F(CommandFilesTest, DecodeAndFxNameTheSameCauseAsInfo) {
    ASSERT_EQ(runScript("echo not audio >junk.wav; mkdir folder.wav").status, 0);
    const test::Bytes whole = test::nativeWave(test::Bytes(400));
    test::writeFile(dir() / "cut.wav", test::Bytes(whole.begin(), whole.end() - 3));
    for (const std::string input : {"missing.wav", "junk.wav", "folder.wav", "cut.wav"}) {
        SCOPED_TRACE(input);
        const auto info = runScript("exec \"$TUNEBOX\" info " + input);
        const auto decode = runScript("exec \"$TUNEBOX\" decode " + input + " out.wav");
        EXPECT_EQ(info.status, 2);
        EXPECT_EQ(decode.status, 2);
        EXPECT_EQ(decode.err, info.err);
        EXPECT_EQ(runScript("exec \"$TUNEBOX\" fx " + input + " out.wav").err, info.err);
    }
    EXPECT_EQ(runScript("exec \"$TUNEBOX\" info missing.wav").err,
              "tunebox: missing.wav: no such file\n");
    const auto record = runScript(std::string(kVirtual) +
                                  "exec \"$TUNEBOX\" record --accompaniment missing.wav "
                                  "--output take.wav");
    EXPECT_EQ(record.status, 2);
    EXPECT_EQ(record.err, "tunebox: missing.wav: no such file\n");
    expectOnly({"junk.wav", "folder.wav", "cut.wav"});
}

TEST_F(CommandFilesTest, AFileWithoutAudioIsRefusedByEveryCommandThatPlaysIt) {
    ASSERT_EQ(runScript("sox -n -r 44100 -c 2 -b 16 empty.wav trim 0 0").status, 0);
    for (const std::string command : {"decode empty.wav out.wav", "play empty.wav",
                                      "record --accompaniment empty.wav --output out.wav"}) {
        SCOPED_TRACE(command);
        const auto run = runScript(std::string(kVirtual) + "exec \"$TUNEBOX\" " + command);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.err, "tunebox: empty.wav: no audio could be decoded from it\n");
    }
    expectOnly({"empty.wav"});
}

TEST_F(CommandFilesTest, StandardOutputGetsTheWaveAndStderrTheStatus) {
    ASSERT_EQ(runScript(kSongMp3).status, 0);
    for (const std::string target :
         {"- >out.wav", "/dev/stdout >out.wav", "- | cat >out.wav", "/dev/stdout | cat >out.wav"}) {
        SCOPED_TRACE(target);
        const auto run = runScript("\"$TUNEBOX\" decode song.mp3 " + target +
                                   "\n"
                                   "sox --i out.wav >/dev/null");
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find("44100 Hz, 2 channels"), std::string::npos) << run.err;
        const test::Bytes wav = file("out.wav");
        ASSERT_GT(wav.size(), 44u);
        EXPECT_EQ(test::loadLe32At(wav, 40), wav.size() - 44);
    }
    expectOnly({"song.wav", "song.mp3", "out.wav"});
    // A device is written to, not refused as an existing file.
    EXPECT_EQ(runScript("exec \"$TUNEBOX\" decode song.mp3 /dev/null").status, 0);
}

}  // namespace
}  // namespace tunebox
