// Following a song as it plays: how far the wipe has got through a line's
// syllables, and a CD+G stream drawn a little at a time, forward and after
// a seek back, matching the screen drawn from the top at each moment.

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "lyrics/cdg_screen.h"
#include "lyrics/lyric_timing.h"
#include "support/cdg_packets.h"

namespace tunebox {
namespace {

// "Hel" 1.0-1.5, "lo " 1.5-2.0, then a rest, "world" 2.5-3.5.
LyricLine helloWorld() {
    return {1.0, "Hello world", {{1.0, 1.5, "Hel"}, {1.5, 2.0, "lo "}, {2.5, 3.5, "world"}}};
}

TEST(LyricProgress, WipesEachSyllableOverItsOwnTimeAndWaitsInTheRests) {
    const LyricLine line = helloWorld();
    const struct {
        double seconds;
        std::size_t sung;
        double part;
    } moments[] = {{0.5, 0, 0}, {1.0, 0, 0},   {1.25, 0, 0.5}, {1.5, 1, 0}, {1.875, 1, 0.75},
                   {2.2, 2, 0}, {3.0, 2, 0.5}, {3.5, 3, 0},    {9.0, 3, 0}};
    for (const auto& moment : moments) {
        const LyricProgress progress = lyricProgress(line, moment.seconds);
        EXPECT_EQ(progress.sung, moment.sung) << moment.seconds;
        EXPECT_DOUBLE_EQ(progress.partOfNext, moment.part) << moment.seconds;
    }
    // A line timed as a whole has nothing to wipe; a syllable of no length
    // is sung the moment it starts.
    EXPECT_EQ(lyricProgress(LyricLine{1.0, "Hello", {}}, 5.0).sung, 0u);
    EXPECT_EQ(lyricProgress(LyricLine{1.0, "Hi", {{2.0, 2.0, "Hi"}}}, 2.0).sung, 1u);
}

// XOR tiles at random places: drawn in a different order, or twice, they
// leave a different screen.
test::CdgStream scribbles(std::size_t packets) {
    std::mt19937 random(19);
    test::CdgStream stream;
    for (std::size_t i = 0; i < packets; ++i) {
        test::addTile(stream, true, int(random() % 16), int(random() % 16), int(random() % 18),
                      int(random() % 50), uint8_t(random() % 64), uint8_t(random() % 64));
    }
    return stream;
}

TEST(CdgPlayback, DrawsWhatIsDueForwardAndStartsAgainAfterASeekBack) {
    const test::CdgStream stream = scribbles(3 * kCdgPacketsPerSecond);
    CdgPlayback playback(stream);
    EXPECT_FALSE(playback.advanceTo(0.0)) << "nothing due yet";
    for (const double seconds : {0.5, 0.5, 1.2, 0.7, 0.0, 2.9, 10.0}) {
        playback.advanceTo(seconds);
        EXPECT_EQ(playback.screen().pixels, cdgScreenAt(stream, seconds).pixels) << seconds;
    }
    EXPECT_FALSE(playback.advanceTo(11.0)) << "past the end nothing more is drawn";
    EXPECT_TRUE(playback.advanceTo(0.0)) << "back to the top clears the screen";
}

}  // namespace
}  // namespace tunebox
