// The key and tempo controls: a move reaches the running player at once,
// and each song gets back the key and tempo it was last played with.

#include <QCheckBox>
#include <QPushButton>
#include <QSpinBox>

#include "gui/session_fixture.h"
#include "platform/profile_file.h"
#include "platform/settings.h"
#include "support/test_files.h"

namespace tunebox::test {
namespace {

using namespace gui;

class KeyTempoDialogTest : public SessionTest {
  protected:
    QSpinBox* spin(ControlId id) const { return control<QSpinBox>(id); }
    void pick(const std::string& path) {
        desktop_.openAnswer = {QString::fromStdString(path)};
        click(kKaraokePick);
    }
    KeyTempo playing() { return controller().accompanimentPlayer().wavGetKeyTempo(); }
};

TEST_F(KeyTempoDialogTest, MovingTheKeyChangesTheRunningPlayerAndTheResetTakesItBack) {
    start(20, 2);
    click(kKaraokePlay);
    ASSERT_EQ(karaoke().state, kPlaying);
    spin(kKeySpin)->setValue(3);
    spin(kTempoSpin)->setValue(90);
    EXPECT_EQ(playing(), (KeyTempo{.semitones = 3, .tempoPercent = 90}));
    EXPECT_EQ(spin(kKeySpin)->text(), QStringLiteral("+3"));
    saveScreenshot(*dialog_, "key-moved");
    click(kKeyTempoReset);
    EXPECT_TRUE(playing().neutral());
    EXPECT_EQ(spin(kTempoSpin)->value(), kFullTempo);
    click(kKaraokeStop);
}

TEST_F(KeyTempoDialogTest, PickingASongAgainBringsBackItsKeyAndTempo) {
    start(2, 1);
    spin(kKeySpin)->setValue(-2);
    spin(kCentsSpin)->setValue(25);
    spin(kTempoSpin)->setValue(85);
    control<QCheckBox>(kFormantCheck)->setChecked(true);
    const auto other = (configDir() / "other.wav").string();
    writeTone(other, 2);
    pick(other);
    EXPECT_EQ(spin(kKeySpin)->value(), 0);
    EXPECT_EQ(spin(kTempoSpin)->value(), kFullTempo);
    pick(song_);
    EXPECT_EQ(spin(kKeySpin)->value(), -2);
    EXPECT_EQ(spin(kCentsSpin)->value(), 25);
    EXPECT_EQ(spin(kTempoSpin)->value(), 85);
    EXPECT_TRUE(control<QCheckBox>(kFormantCheck)->isChecked());
    // PLAY sets the player up with what the controls show.
    click(kKaraokePlay);
    EXPECT_EQ(playing(), (KeyTempo{-2, 25, 85, true}));
    click(kKaraokeStop);
}

TEST_F(KeyTempoDialogTest, WithTheMemoryOffTheControlsKeepTheirSetting) {
    profileWriteString(settingsPath(), "KEY_TEMPO", "REMEMBER", "0");
    start(2, 1);
    spin(kKeySpin)->setValue(4);
    const auto other = (configDir() / "other.wav").string();
    writeTone(other, 2);
    pick(other);
    EXPECT_EQ(spin(kKeySpin)->value(), 4);
    spin(kKeySpin)->setValue(1);
    pick(song_);
    EXPECT_EQ(spin(kKeySpin)->value(), 1);
    EXPECT_EQ(readText(settingsPath()).find("KEY_TEMPO_SONGS"), std::string::npos);
}

}  // namespace
}  // namespace tunebox::test
