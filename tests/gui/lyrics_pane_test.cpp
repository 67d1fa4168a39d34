// The lyrics pane: the line it shows follows what the simulated device has
// played (not what was read ahead of it), from a start position and across
// PAUSE and PLAY; the wipe across sung syllables; a CD+G screen drawn scaled
// inside its border; the pane's own window; and where the lyrics come from.

#include <QElapsedTimer>
#include <QPushButton>
#include <cmath>
#include <fstream>
#include <iostream>
#include <random>

#include "app/gui/lyrics_dock.h"
#include "app/gui/lyrics_pane.h"
#include "gui/session_fixture.h"
#include "support/cdg_packets.h"

namespace tunebox::test {
namespace {

using namespace gui;

constexpr double kLineSeconds = 0.4;
constexpr int64_t kBytesPerSecond = 176400;

// "line N" due at N x 0.4 s, for the whole song.
void writeCountingLrc(const std::filesystem::path& path, int lines) {
    std::ofstream out(path);
    for (int n = 1; n <= lines; ++n) {
        const int centiseconds = static_cast<int>(std::lround(n * kLineSeconds * 100));
        out << '[' << centiseconds / 6000 << ':' << (centiseconds / 100) % 60 << '.'
            << centiseconds % 100 << "]line " << n << '\n';
    }
}

// In whole bytes: a line is due at a multiple of 0.4 s, where seconds in
// floating point might fall either side of it.
constexpr int64_t kLineBytes = kBytesPerSecond * 2 / 5;
constexpr int64_t kToleranceBytes = kBytesPerSecond / 50;

int lineDueAt(int64_t bytes) {
    return bytes < 0 ? 0 : static_cast<int>(bytes / kLineBytes);
}

class LyricsPaneTest : public SessionTest {
  protected:
    // A song with counting lyrics beside it, on a device heard a quarter of
    // a second after the player reads ahead of it.
    void startCounting(double songSeconds) {
        writeCountingLrc(configDir() / "song.lrc", static_cast<int>(songSeconds / kLineSeconds));
        startWith(songSeconds, 1, {.outputLatencyBytes = uint32_t{kBytesPerSecond / 4}});
    }
    LyricsPane& pane() const { return dialog_->lyricsDock().pane(); }
    int shownLine() const {
        const QString shown = pane().currentLine();
        return shown.isEmpty() ? 0 : shown.mid(5).toInt();
    }
    int64_t played(uint32_t runStart) {
        return int64_t{runStart} + controller().accompanimentPlayer().wavGetDevicePosition();
    }
    // For `seconds`, the line shown is always one due at the played
    // position at most 20 ms before.
    void expectFollowing(double seconds, uint32_t runStart) {
        QElapsedTimer clock;
        clock.start();
        int samples = 0;
        while (clock.elapsed() < seconds * 1000) {
            const int64_t before = played(runStart);
            const int shown = shownLine();
            const int64_t after = played(runStart);
            ASSERT_GE(shown, lineDueAt(before - kToleranceBytes)) << before;
            ASSERT_LE(shown, lineDueAt(after)) << after;
            ++samples;
            QTest::qWait(3);
        }
        EXPECT_GT(samples, 50);
    }
};

TEST_F(LyricsPaneTest, ShowsTheLineDueAtThePlayedPositionFromTheStartAndAcrossAPause) {
    startCounting(8);
    auto* trackbar = control<PositionTrackbar>(kKaraokeTrackbar);
    trackbar->setSliderDown(true);
    trackbar->setSliderPosition(2500);  // 2 s in
    trackbar->setSliderDown(false);
    const uint32_t start = karaoke().position;
    ASSERT_EQ(start, 2 * kBytesPerSecond);
    QTest::qWait(50);
    EXPECT_EQ(shownLine(), 5) << "before PLAY, the line at the start";

    click(kKaraokePlay);
    expectFollowing(1.5, start);

    click(kKaraokePause);
    QTest::qWait(50);
    const uint32_t paused = karaoke().position;
    EXPECT_EQ(shownLine(), lineDueAt(paused));
    QTest::qWait(400);
    EXPECT_EQ(shownLine(), lineDueAt(paused)) << "still while paused";
    saveScreenshot(*dialog_, "lyrics-paused");

    click(kKaraokePlay);
    expectFollowing(1.5, paused);
    click(kKaraokeStop);
}

TEST_F(LyricsPaneTest, TheOwnWindowShowsTheSameAndClosingItBringsThePaneBack) {
    startCounting(4);
    auto* trackbar = control<PositionTrackbar>(kKaraokeTrackbar);
    trackbar->setSliderPosition(5000);  // 2 s: "line 5"
    QTest::qWait(50);
    LyricsDock& dock = dialog_->lyricsDock();
    ASSERT_TRUE(dock.isVisible());
    QTest::mouseClick(dock.findChild<QPushButton*>("lyricsDetach"), Qt::LeftButton);
    ASSERT_NE(dock.lyricsWindow(), nullptr);
    EXPECT_EQ(pane().window(), dock.lyricsWindow());
    EXPECT_TRUE(pane().isVisible());
    EXPECT_EQ(pane().currentLine(), "line 5");
    EXPECT_EQ(pane().nextLine(), "line 6");

    dock.lyricsWindow()->close();
    ASSERT_TRUE(waitFor([&] { return dock.lyricsWindow() == nullptr; }, 2000));
    EXPECT_EQ(pane().window(), dialog_.get());
    EXPECT_TRUE(pane().isVisible());
    EXPECT_EQ(pane().currentLine(), "line 5");
}

// An UltraStar song picked as the accompaniment plays its #MP3 and shows its
// own words; lyrics that cannot be read are said once and the song plays.
TEST_F(LyricsPaneTest, LyricsComeWithTheAccompanimentOrArePickedAndBadOnesAreSaidOnce) {
    std::ofstream(configDir() / "song.lrc") << "no timed lines here\n";
    start(2, 4);
    ASSERT_EQ(desktop_.messages.size(), 1);
    EXPECT_TRUE(desktop_.messages[0].startsWith("No lyrics shown|"));
    EXPECT_EQ(control<QLineEdit>(kKaraokeName)->text().toStdString(), song_);
    EXPECT_FALSE(pane().hasLyrics());
    EXPECT_FALSE(dialog_->lyricsDock().isVisible());

    const auto ultraStar = configDir() / "song.txt";
    std::ofstream(ultraStar) << "#TITLE:Song\n#MP3:song.wav\n#BPM:60\n#GAP:500\n"
                                ": 0 2 60 Hel\n: 2 2 60 lo\nE\n";
    desktop_.openAnswer = {QString::fromStdString(ultraStar.string())};
    click(kKaraokePick);
    EXPECT_EQ(control<QLineEdit>(kKaraokeName)->text().toStdString(), song_);
    EXPECT_EQ(pane().nextLine(), "Hello");
    EXPECT_TRUE(dialog_->lyricsDock().isVisible());
    EXPECT_EQ(desktop_.messages.size(), 1);

    desktop_.openAnswer = {QString::fromStdString((configDir() / "song.lrc").string())};
    QTest::mouseClick(dialog_->findChild<QPushButton*>("lyricsPick"), Qt::LeftButton);
    EXPECT_EQ(desktop_.messages.size(), 2);
    click(kKaraokePlay);
    EXPECT_EQ(karaoke().state, kPlaying);
    click(kKaraokeStop);
}

// Too large to be lyrics: refused before it is read. Random bytes as CD+G
// draw noise while the song plays to its end.
TEST_F(LyricsPaneTest, HostileLyricsNeitherHoldUpThePickNorStopTheSong) {
    std::ofstream(configDir() / "song.lrc") << "[00:01.00]" << std::string(5 << 20, 'a');
    QElapsedTimer clock;
    clock.start();
    start(2, 4);
    std::cout << "picked beside a 5 MB one-line LRC in " << clock.elapsed() << " ms\n";
    ASSERT_EQ(desktop_.messages.size(), 1);
    EXPECT_TRUE(desktop_.messages[0].endsWith("too large to be lyrics"));

    std::filesystem::remove(configDir() / "song.lrc");
    std::mt19937 random(7);
    std::ofstream noise(configDir() / "song.cdg", std::ios::binary);
    for (int i = 0; i < (1 << 20); ++i) {
        noise.put(static_cast<char>(random()));
    }
    noise.close();
    desktop_.openAnswer = {QString::fromStdString(song_)};
    click(kKaraokePick);
    EXPECT_TRUE(pane().hasLyrics());
    click(kKaraokePlay);
    ASSERT_TRUE(waitFor([&] { return karaoke().state == kIdle; }, 10000));
    EXPECT_EQ(desktop_.messages.size(), 1);
}

// The sung part of the line is painted in another colour than the rest.
TEST(LyricsPaneWipe, ReachesAsFarAsTheSyllablesSung) {
    LyricsPane pane;
    pane.resize(600, 200);
    LyricSheet sheet;
    sheet.lines.push_back({1.0, "WWWW WWWW", {{1.0, 2.0, "WWWW "}, {2.0, 3.0, "WWWW"}}});
    pane.setLyrics(SongLyrics{sheet, {}});
    // The rightmost column holding a sung (yellow: little blue) pixel.
    const auto sungReach = [&](double seconds) {
        pane.follow(seconds);
        const QImage image = pane.grab().toImage();
        int reach = -1;
        for (int x = 0; x < image.width(); ++x) {
            for (int y = 0; y < image.height(); ++y) {
                const QColor colour = image.pixelColor(x, y);
                if (colour.red() > 200 && colour.blue() < 100) {
                    reach = x;
                }
            }
        }
        return reach;
    };
    const int none = sungReach(1.0);
    const int half = sungReach(2.0);
    const int most = sungReach(2.5);
    const int all = sungReach(3.5);
    EXPECT_EQ(none, -1);
    EXPECT_GT(half, 150);
    EXPECT_LT(half, 300);
    EXPECT_GT(most, half + 30);
    EXPECT_LT(most, all - 30);
    EXPECT_GT(all, 300);
}

// Background red, border green and one blue tile, drawn at twice the size,
// with the border colour beside the screen where the pane is wider.
TEST(LyricsPaneCdg, DrawsTheScreenScaledInsideItsBorderColour) {
    CdgStream stream;
    addPacket(stream, 30, {0, 0, 0x3C, 0x00, 0x00, 0x0F, 0x03, 0x30});  // red, blue, green
    addPacket(stream, 1, {1});
    addPacket(stream, 2, {3});
    addTile(stream, false, 2, 2, 5, 10, 0x3F, 0x3F);
    LyricsPane pane;
    pane.resize(700, 432);
    pane.setLyrics(SongLyrics{std::nullopt, stream});
    pane.follow(0.0);
    EXPECT_EQ(pane.grab().toImage().pixelColor(400, 200).rgb(), qRgb(0, 0, 0)) << "not drawn yet";
    pane.follow(1.0);
    const QImage image = pane.grab().toImage();
    // The screen spans x 50..649 at twice its size.
    const auto at = [&](int x, int y) { return image.pixelColor(50 + 2 * x, 2 * y).rgb(); };
    EXPECT_EQ(at(150, 100), qRgb(255, 0, 0));
    EXPECT_EQ(at(2, 2), qRgb(0, 255, 0));
    EXPECT_EQ(at(297, 210), qRgb(0, 255, 0));
    EXPECT_EQ(at(62, 65), qRgb(0, 0, 255));
    EXPECT_EQ(at(59, 65), qRgb(255, 0, 0));
    EXPECT_EQ(image.pixelColor(10, 200).rgb(), qRgb(0, 255, 0));
    saveScreenshot(pane, "lyrics-cdg");
}

}  // namespace
}  // namespace tunebox::test
