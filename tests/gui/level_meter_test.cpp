#include <QColor>

#include "app/gui/level_meter.h"
#include "gui/gui_fixture.h"

namespace tunebox::test {
namespace {

using gui::LevelMeter;

class LevelMeterTest : public GuiTest {
  protected:
    void SetUp() override {
        GuiTest::SetUp();
        meter_.resize(240, 26);
    }
    // The colour in the middle of segment `index` of bar 0 (upper) or 1.
    QColor segment(int bar, int index) const {
        const int width = meter_.width() / gui::kMeterSegments;
        const int half = meter_.height() / 2;
        const int y = bar == 0 ? half / 2 : half + (meter_.height() - half) / 2;
        return meter_.frame().pixelColor(index * width + width / 2, y);
    }
    int litCount(int bar) const {
        int lit = 0;
        for (int i = 0; i < gui::kMeterSegments; ++i) {
            const QColor colour = segment(bar, i);
            lit += colour == QColor(0, 255, 0) || colour == QColor(255, 0, 0);
        }
        return lit;
    }

    LevelMeter meter_;
};

// Unlit reads as off: far darker than the grey around it and the lit colours.
bool looksUnlit(const QColor& colour) {
    return colour.value() < 64;
}

TEST_F(LevelMeterTest, ClearedMeterShowsTwentyFourUnlitSegmentsOnGrey) {
    meter_.draw(0, 0);
    for (int bar = 0; bar < 2; ++bar) {
        for (int i = 0; i < gui::kMeterSegments; ++i) {
            EXPECT_TRUE(looksUnlit(segment(bar, i))) << "bar " << bar << " segment " << i;
        }
    }
    const QColor grey(128, 128, 128);
    EXPECT_EQ(meter_.frame().pixelColor(0, 0), grey);
    EXPECT_EQ(meter_.frame().pixelColor(19, 6), grey) << "gap between segments";
    EXPECT_EQ(meter_.frame().pixelColor(5, 12), grey) << "gap between bars";
}

TEST_F(LevelMeterTest, LevelsLightSegmentsFromTheLeftUpToRed) {
    meter_.draw(27307, 32767);
    EXPECT_EQ(litCount(0), 11);
    EXPECT_EQ(segment(0, 10), QColor(255, 0, 0));
    EXPECT_TRUE(looksUnlit(segment(0, 11)));
    EXPECT_EQ(litCount(1), 12);

    meter_.draw(27305, -5);
    EXPECT_EQ(litCount(0), 10) << "10/12 of full scale lights only the greens";
    EXPECT_EQ(litCount(1), 0) << "a negative level lights nothing";
}

TEST_F(LevelMeterTest, ScreenShowsTheFrameDrawnOffScreen) {
    meter_.draw(16384, 0);
    const QImage onScreen = meter_.grab().toImage();
    EXPECT_EQ(onScreen.pixelColor(10, 6), QColor(0, 255, 0));
    EXPECT_TRUE(looksUnlit(onScreen.pixelColor(10, 19)));
}

}  // namespace
}  // namespace tunebox::test
