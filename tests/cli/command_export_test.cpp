// The export command as a user runs it, judged by ffmpeg: what it decodes
// from each export and how loud it measures a take.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <numeric>
#include <sstream>

#include "support/native_wav.h"
#include "support/take_runner.h"
#include "support/test_files.h"

namespace tunebox {
namespace {

constexpr double kRate = 44100.0;

// A sweep in each channel (at different speeds): any misalignment between
// two copies shows up as a loss of correlation, unlike a steady tone's.
std::vector<int16_t> sweeps(double seconds, double level) {
    const auto frames = static_cast<std::size_t>(seconds * kRate);
    std::vector<int16_t> samples(frames * 2);
    for (std::size_t i = 0; i < frames; ++i) {
        const double t = i / kRate;
        samples[2 * i] = static_cast<int16_t>(level * std::sin(2 * M_PI * (100 + 400 * t) * t));
        samples[2 * i + 1] = static_cast<int16_t>(level * std::sin(2 * M_PI * (300 + 250 * t) * t));
    }
    return samples;
}

// One second of tone, two of near silence, over and over: only the gated
// measurement ignores the quiet stretches.
std::vector<int16_t> bursts(double seconds) {
    std::vector<int16_t> samples = sweeps(seconds, 20000);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (static_cast<std::size_t>(i / 2 / kRate) % 3 != 0) {
            samples[i] = static_cast<int16_t>(samples[i] / 1000);
        }
    }
    return samples;
}

// A quiet take with one loud moment: raising it to -14 LUFS would clip.
std::vector<int16_t> quietWithAPeak(double seconds) {
    std::vector<int16_t> samples = sweeps(seconds, 1500);
    const std::size_t middle = samples.size() / 2;
    std::fill(samples.begin() + middle, samples.begin() + middle + 400, int16_t{26000});
    return samples;
}

double correlation(const std::vector<int16_t>& a, const std::vector<int16_t>& b) {
    const std::size_t count = std::min(a.size(), b.size());
    double ab = 0.0;
    double aa = 0.0;
    double bb = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        ab += static_cast<double>(a[i]) * b[i];
        aa += static_cast<double>(a[i]) * a[i];
        bb += static_cast<double>(b[i]) * b[i];
    }
    return ab / std::sqrt(aa * bb);
}

class CommandExportTest : public ::testing::Test, protected test::TakeRunner {
  protected:
    void SetUp() override {
        // An empty settings folder: no artist from the user's own file.
        std::filesystem::create_directories(dir() / "config");
    }

    test::RunResult command(const std::string& arguments) {
        return runScript("export TUNEBOX_CONFIG_DIR=config\nexec \"$TUNEBOX\" " + arguments);
    }

    // The file decoded by ffmpeg as native PCM.
    std::vector<int16_t> decoded(const std::string& name) {
        const auto run =
            runScript("ffmpeg -v error -y -i '" + name + "' -f s16le -ac 2 -ar 44100 decoded.raw");
        EXPECT_EQ(run.status, 0) << run.err;
        return test::toSamples(test::readBytes(dir() / "decoded.raw"));
    }

    // ffmpeg's summary value for `field` ("I" or "Peak").
    double ffmpegLoudness(const std::string& name, const std::string& field) {
        const auto run = runScript("ffmpeg -nostats -hide_banner -i '" + name +
                                   "' -af ebur128=peak=true -f null - 2>&1 | "
                                   "awk '$1 == \"" +
                                   field + ":\" { print $2 }' | tail -1");
        EXPECT_EQ(run.status, 0) << run.err;
        return std::strtod(run.out.c_str(), nullptr);
    }

    std::string tag(const std::string& name, const std::string& key) {
        return runScript("ffprobe -v error -show_entries format_tags=" + key +
                         ":stream_tags=" + key + " -of default=nw=1:nk=1 '" + name + "' | head -1")
            .out;
    }
};

TEST_F(CommandExportTest, FlacGivesBackTheTakeSampleForSampleWithItsTags) {
    const std::vector<int16_t> take = sweeps(3.0, 30000);
    test::writeNativeWav((dir() / "Evening song.wav").string(), take);
    std::ofstream(dir() / "config" / "Tunebox.INI") << "[EXPORT]\nARTIST=Mio Ōno\n";

    const auto run = command("export 'Evening song.wav' out.flac");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "out.flac: FLAC, \"Evening song (take)\"\n");
    EXPECT_EQ(decoded("out.flac"), take);
    EXPECT_EQ(tag("out.flac", "title"), "Evening song (take)\n");
    EXPECT_EQ(tag("out.flac", "artist"), "Mio Ōno\n");
    EXPECT_EQ(tag("out.flac", "date").size(), 11u);  // YYYY-MM-DD

    // --artist beats the settings file.
    ASSERT_EQ(command("export 'Evening song.wav' named.flac --artist Ren").status, 0);
    EXPECT_EQ(tag("named.flac", "artist"), "Ren\n");
}

// Each lossy export decodes to the take's length within one codec frame and
// lines up with it: the encoder's delay is removed by what the file declares
// (the MP3's info tag, the Opus pre-skip), not left at the start.
TEST_F(CommandExportTest, LossyExportsKeepTheTakesLengthAndTiming) {
    const std::vector<int16_t> take = sweeps(4.0, 20000);
    test::writeNativeWav((dir() / "take.wav").string(), take);
    struct Case {
        const char* name;
        std::size_t frameSlack;  // one codec frame at 44,100 Hz
    };
    for (const Case& each : {Case{"out.mp3", 1152}, Case{"out.ogg", 2048}, Case{"out.opus", 960}}) {
        SCOPED_TRACE(each.name);
        const auto run = command(std::string("export take.wav ") + each.name);
        ASSERT_EQ(run.status, 0) << run.err;
        const std::vector<int16_t> back = decoded(each.name);
        const auto frames = static_cast<long>(back.size() / 2);
        EXPECT_LE(std::labs(frames - static_cast<long>(take.size() / 2)),
                  static_cast<long>(each.frameSlack));
        EXPECT_GT(correlation(take, back), 0.98);
    }
    const auto info = command("info out.mp3");
    EXPECT_NE(info.out.find("gapless: "), std::string::npos) << info.out;
}

TEST_F(CommandExportTest, LoudnessAgreesWithFfmpegOnThreeSignals) {
    const std::vector<std::pair<std::string, std::vector<int16_t>>> signals{
        {"steady.wav", sweeps(5.0, 6000)},
        {"loud.wav", sweeps(5.0, 30000)},
        {"bursts.wav", bursts(9.0)},
    };
    for (const auto& [name, samples] : signals) {
        SCOPED_TRACE(name);
        test::writeNativeWav((dir() / name).string(), samples);
        const auto info = command("info " + name);
        ASSERT_EQ(info.status, 0) << info.err;
        const auto at = info.out.find("loudness: ");
        ASSERT_NE(at, std::string::npos) << info.out;
        const double ours = std::strtod(info.out.c_str() + at + 10, nullptr);
        EXPECT_NEAR(ours, ffmpegLoudness(name, "I"), 0.1 + 1e-9);
    }
}

TEST_F(CommandExportTest, NormalizingReachesTheTargetOrStopsAtTheTruePeakCeiling) {
    test::writeNativeWav((dir() / "steady.wav").string(), sweeps(5.0, 3000));
    const auto reached = command("export steady.wav steady.flac --normalize -14");
    ASSERT_EQ(reached.status, 0) << reached.err;
    EXPECT_EQ(reached.out.rfind("normalized: gain +", 0), 0u) << reached.out;
    EXPECT_NE(reached.out.find(" to reach -14.0 LUFS\n"), std::string::npos) << reached.out;
    EXPECT_NEAR(ffmpegLoudness("steady.flac", "I"), -14.0, 0.15);

    test::writeNativeWav((dir() / "peaky.wav").string(), quietWithAPeak(5.0));
    const auto limited = command("export peaky.wav peaky.flac --normalize -14");
    ASSERT_EQ(limited.status, 0) << limited.err;
    EXPECT_NE(limited.out.find(", short of -14.0 LUFS so that the true peak stays at -1.0 dBTP"),
              std::string::npos)
        << limited.out;
    EXPECT_LE(ffmpegLoudness("peaky.flac", "Peak"), -0.9);
    EXPECT_LT(ffmpegLoudness("peaky.flac", "I"), -15.0);
}

TEST_F(CommandExportTest, BadInputAndOptionsAreRefusedInOneLineLeavingNoFile) {
    test::writeNativeWav((dir() / "take.wav").string(), sweeps(1.0, 8000));
    std::ofstream(dir() / "notes.wav") << "not a wave file at all";
    const auto whole = test::readBytes(dir() / "take.wav");
    // Cut inside the header, and inside the data.
    std::ofstream(dir() / "cut.wav", std::ios::binary)
        .write(reinterpret_cast<const char*>(whole.data()), 30);
    std::ofstream(dir() / "half.wav", std::ios::binary)
        .write(reinterpret_cast<const char*>(whole.data()),
               static_cast<std::streamsize>(whole.size() / 2));
    for (const char* arguments : {
             "export notes.wav out.flac",
             "export cut.wav out.flac",
             "export half.wav out.mp3",
             "export missing.wav out.flac",
             "export take.wav out.wav",
             "export take.wav out.mp3 --quality 10",
             "export take.wav out.ogg --quality 1.5",
             "export take.wav out.flac --normalize 6",
         }) {
        SCOPED_TRACE(arguments);
        const auto run = command(arguments);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(test::lineCount(run.err), 1u) << run.err;
        EXPECT_EQ(run.err.rfind("tunebox: ", 0), 0u) << run.err;
    }
    const auto listing = runScript("ls | grep -c '^out'");
    EXPECT_EQ(listing.out, "0\n");

    ASSERT_EQ(command("export take.wav out.ogg").status, 0);
    const auto again = command("export take.wav out.ogg");
    EXPECT_EQ(again.status, 2);
    EXPECT_EQ(again.err, "tunebox: out.ogg: already exists; pass --overwrite to replace it\n");
    EXPECT_EQ(command("export take.wav out.ogg --overwrite --quality 0.2").status, 0);
}

// A take recorded over a song is named for the song, in an MP3's ID3 tag too.
TEST_F(CommandExportTest, ARecordedTakeIsTitledForItsSong) {
    const auto run = runScript(
        "export TUNEBOX_AUDIO=virtual TUNEBOX_VIRTUAL_SPEED=10 TUNEBOX_CONFIG_DIR=config\n"
        "\"$TUNEBOX\" tune song.wav >/dev/null || exit 9\n"
        "\"$TUNEBOX\" record --accompaniment song.wav --output take.wav --no-echo >/dev/null "
        "|| exit 8\n"
        "exec \"$TUNEBOX\" export take.wav take.mp3 --artist 'Aki'");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(tag("take.mp3", "title"), "song (take)\n");
    EXPECT_EQ(tag("take.mp3", "artist"), "Aki\n");
}

}  // namespace
}  // namespace tunebox
