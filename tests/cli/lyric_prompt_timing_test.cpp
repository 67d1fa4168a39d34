// The lyric rows keep time with what the singer hears. A song plays through
// the simulated devices while the rows are sampled many times, each time
// with the virtual clock held still, and the line they show must be the one
// due where the output device has played to, within 20 ms: from the start,
// from a start position, across a pause, and over a take. The player reads
// its file more than half a second ahead of the device, and the lines here
// change every 0.3 to 0.7 s, so rows that followed the reading would fail.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <functional>
#include <set>
#include <thread>

#include "app/cli/command_line_take.h"
#include "app/cli/lyric_prompt.h"
#include "core/wave_format.h"
#include "lyrics/lrc_lyrics.h"
#include "lyrics/lyric_timing.h"
#include "support/player_support.h"
#include "support/scoped_environment.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

constexpr double kSongSeconds = 6.0;
constexpr double kTolerance = 0.020;
// Fast enough to keep the test short, slow enough that a loaded machine
// still keeps the virtual clock.
constexpr double kSpeed = 4.0;

// Lines 0.3 to 0.7 s apart, written as an LRC sheet and read back, so that
// the times are those a file gives.
LyricSheet handMadeSheet() {
    std::string lrc = "[ti:Timing]\n";
    double at = 0.25;
    for (int line = 0; at < kSongSeconds; ++line) {
        const int centiseconds = static_cast<int>(std::lround(at * 100));
        char tag[32];
        std::snprintf(tag, sizeof tag, "[00:%02d.%02d]", centiseconds / 100, centiseconds % 100);
        lrc += std::string(tag) + "line " + std::to_string(line) + "\n";
        at += 0.3 + 0.1 * (line * 3 % 5);
    }
    LyricReading reading = parseLrc(lrc);
    return std::move(*reading.sheet);
}

// The current line of what the prompt printed: the text of its first row.
std::string currentRow(const std::string& printed) {
    const std::string clear = "\033[K";
    const std::size_t begin = printed.find(clear) + clear.size();
    return printed.substr(begin, printed.find('\n', begin) - begin);
}

std::string textOf(const LyricSheet& sheet, std::optional<std::size_t> line) {
    return line ? sheet.lines[*line].text : "";
}

// One look at a running song, the clock held still: what the prompt printed
// and where in the song the output device has played to.
struct Look {
    std::string printed;
    double playedSeconds = 0;
    bool running = false;
};

class LyricPromptTiming : public ::testing::Test {
  protected:
    void SetUp() override {
        const std::vector<uint8_t> song =
            test::patternBytes(static_cast<uint32_t>(kSongSeconds * kNativeBytesPerSecond));
        length_ = static_cast<uint32_t>(song.size());
        ASSERT_TRUE(test::writeWav(path_, song));
    }

    Look lookWhileStill(const std::function<Look()>& look) {
        audio_->setClockStalled(true);
        Look seen = look();
        audio_->setClockStalled(false);
        return seen;
    }

    // Samples until the song ends, checking each look; `between` runs after
    // each. Returns the lines shown.
    std::set<std::string> followToEnd(
        const std::function<Look()>& look, const std::function<void()>& between = [] {
            std::this_thread::sleep_for(std::chrono::milliseconds(7));
        }) {
        std::set<std::string> shown;
        std::string current;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        for (;;) {
            const Look seen = lookWhileStill(look);
            if (!seen.running || std::chrono::steady_clock::now() > deadline) {
                break;
            }
            if (!seen.printed.empty()) {
                current = currentRow(seen.printed);
                shown.insert(current);
            }
            // The first fault says enough.
            const ::testing::AssertionResult due = showsTheDueLine(current, seen.playedSeconds);
            EXPECT_TRUE(due);
            if (!due) {
                break;
            }
            between();
        }
        return shown;
    }

    ::testing::AssertionResult showsTheDueLine(const std::string& current, double seconds) const {
        const std::string early = textOf(sheet_, dueLyricLine(sheet_, seconds - kTolerance));
        const std::string late = textOf(sheet_, dueLyricLine(sheet_, seconds + kTolerance));
        if (current == early || current == late) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << "at " << seconds << " s the rows show \"" << current
                                             << "\", not \"" << early << "\"";
    }

    // The lines due from `fromSeconds` to the end.
    std::set<std::string> linesFrom(double fromSeconds) const {
        std::set<std::string> lines{textOf(sheet_, dueLyricLine(sheet_, fromSeconds))};
        for (const LyricLine& line : sheet_.lines) {
            if (line.start > fromSeconds) {
                lines.insert(line.text);
            }
        }
        return lines;
    }

    // A plain player on the song, started at `start` bytes.
    void play(WaveCtl& player, uint32_t start) {
        test::initPlayer(player);
        ASSERT_EQ(player.wavOpenFile(path_.string(), start, length_), 1);
        ASSERT_EQ(player.wavPlay(), 1);
    }

    // What the prompt prints for `player`, whose run began at `runStart`
    // bytes as its owner keeps it, against where the device has played to
    // from `start`, the byte the song was asked to start at.
    static Look lookAt(WaveCtl& player, cli::LyricPrompt& prompt, uint32_t runStart,
                       uint32_t start) {
        Look seen;
        seen.printed = prompt.follow(player, runStart);
        seen.playedSeconds = playedSeconds(player, start);
        seen.running = player.state() != kPlayerStopped;
        return seen;
    }

    static double playedSeconds(WaveCtl& player, uint32_t start) {
        return (double(start) + player.wavGetDevicePosition()) / kNativeBytesPerSecond;
    }

    test::TempDir dir_;
    std::filesystem::path path_ = dir_ / "song.wav";
    uint32_t length_ = 0;
    LyricSheet sheet_ = handMadeSheet();
    std::shared_ptr<VirtualAudio> audio_ =
        std::make_shared<VirtualAudio>(VirtualAudioConfig{.speed = kSpeed});
};

TEST_F(LyricPromptTiming, FromTheStartAndFromAStartPosition) {
    for (const double startSeconds : {0.0, 2.5}) {
        const auto start = static_cast<uint32_t>(startSeconds * kNativeBytesPerSecond);
        WaveCtl player(*audio_);
        cli::LyricPrompt prompt(sheet_);
        play(player, start);
        const std::set<std::string> shown =
            followToEnd([&] { return lookAt(player, prompt, start, start); });
        EXPECT_EQ(shown, linesFrom(startSeconds)) << "from " << startSeconds << " s";
    }
}

TEST_F(LyricPromptTiming, APauseHoldsTheLineAndPlayGoesOnFromIt) {
    WaveCtl player(*audio_);
    cli::LyricPrompt prompt(sheet_);
    play(player, 0);
    bool paused = false;
    const std::set<std::string> shown = followToEnd(
        [&] { return lookAt(player, prompt, 0, 0); },
        [&] {
            if (!paused && playedSeconds(player, 0) > 2.0) {
                player.wavPause(1);
                paused = true;
                // Held for a second of the clock, past the next line's time.
                const double heldAt = playedSeconds(player, 0);
                const uint64_t frameAtPause = audio_->frameNow();
                while (audio_->frameNow() < frameAtPause + kNativeSampleRate) {
                    const Look still = lookWhileStill([&] { return lookAt(player, prompt, 0, 0); });
                    EXPECT_TRUE(still.printed.empty()) << "the rows moved during the pause";
                    EXPECT_EQ(still.playedSeconds, heldAt);
                    std::this_thread::sleep_for(std::chrono::milliseconds(7));
                }
                player.wavPause(0);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(7));
        });
    EXPECT_TRUE(paused);
    EXPECT_EQ(shown, linesFrom(0));
}

TEST_F(LyricPromptTiming, ATakeShowsTheLinesOfTheAccompanimentItPlays) {
    test::ScopedEnvironment settings("XDG_CONFIG_HOME", dir_.path().c_str());
    const double startSeconds = 1.5;
    cli::RecordingOptions options;
    options.accompaniment = path_.string();
    options.output = (dir_ / "take.wav").string();
    options.manualFlag = 1;
    options.voiceFile = false;
    options.startBytes = static_cast<uint32_t>(startSeconds * kNativeBytesPerSecond);
    cli::CommandLineTake take(*audio_);
    ASSERT_EQ(take.rec(options), 1) << take.error();
    cli::LyricPrompt prompt(sheet_);
    auto& player = take.controller().accompanimentPlayer();
    int turn = 0;
    const std::set<std::string> shown = followToEnd(
        [&] {
            Look seen = lookAt(player, prompt, take.accompanimentRunStart(), options.startBytes);
            seen.running = seen.running && take.capture().isActive();
            return seen;
        },
        [&] {
            take.runFor(std::chrono::milliseconds(5));
            if (++turn % 25 == 0) {
                take.tick();
            }
        });
    take.controller().stopRecorder();
    EXPECT_EQ(shown, linesFrom(startSeconds));
}

}  // namespace
}  // namespace tunebox
