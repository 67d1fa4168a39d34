// The export action's dialog: its choices follow the format, and the take
// lands where the picker says with the format's extension.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QTimer>
#include <fstream>

#include "app/gui/export_dialog.h"
#include "gui/fake_desktop.h"
#include "gui/gui_fixture.h"
#include "support/native_wav.h"
#include "support/tone_signals.h"

namespace tunebox {
namespace {

class ExportDialogTest : public test::GuiTest {
  protected:
    test::TempDir files_;
    test::FakeDesktop desktop_;
};

TEST_F(ExportDialogTest, TheQualityFollowsTheFormatAndTheArtistTheSettings) {
    std::ofstream(configDir() / "Tunebox.INI") << "[EXPORT]\nARTIST=Yui\n";
    gui::ExportDialog dialog;
    auto* format = dialog.findChild<QComboBox*>(QStringLiteral("format"));
    auto* quality = dialog.findChild<QDoubleSpinBox*>(QStringLiteral("quality"));
    ASSERT_NE(format, nullptr);
    ASSERT_NE(quality, nullptr);
    EXPECT_EQ(dialog.findChild<QLineEdit*>(QStringLiteral("artist"))->text(), "Yui");

    format->setCurrentIndex(format->findText(QStringLiteral("MP3")));
    EXPECT_EQ(quality->maximum(), 9.0);
    EXPECT_EQ(dialog.choices().quality, 2.0);
    EXPECT_FALSE(dialog.choices().normalizeLufs);

    format->setCurrentIndex(format->findText(QStringLiteral("Opus")));
    dialog.findChild<QCheckBox*>(QStringLiteral("normalize"))->setChecked(true);
    const gui::ExportChoices chosen = dialog.choices();
    EXPECT_EQ(chosen.format, ExportFormat::kOpus);
    EXPECT_EQ(quality->maximum(), 1.0);
    EXPECT_EQ(chosen.normalizeLufs, -14.0);
}

TEST_F(ExportDialogTest, TheTakeIsSavedWithTheFormatsExtensionAndTheUserIsTold) {
    const std::string take = (files_ / "take.wav").string();
    test::writeNativeWav(take, test::tone(1.0, 440, 8000, 8000));
    desktop_.saveAnswer = QString::fromStdString((files_ / "shared").string());

    const gui::ExportChoices choices{
        .format = ExportFormat::kOgg, .quality = 0.5, .normalizeLufs = std::nullopt, .artist = {}};
    // The window goes on answering while the take is encoded.
    bool windowServed = false;
    QTimer::singleShot(0, [&] { windowServed = true; });
    ASSERT_TRUE(
        gui::exportTakeAs(nullptr, desktop_.services(), QString::fromStdString(take), choices));
    EXPECT_TRUE(windowServed);
    EXPECT_TRUE(std::filesystem::exists(files_ / "shared.ogg"));
    ASSERT_EQ(desktop_.requests.size(), 1u);
    EXPECT_EQ(desktop_.requests[0].defaultSuffix, "ogg");
    ASSERT_EQ(desktop_.messages.size(), 1);
    EXPECT_TRUE(desktop_.messages[0].endsWith("shared.ogg")) << desktop_.messages[0].toStdString();

    // A take that is no audio is a stop message, and nothing is left behind.
    std::ofstream(files_ / "notes.wav") << "not audio";
    desktop_.saveAnswer = QString::fromStdString((files_ / "bad.ogg").string());
    EXPECT_FALSE(gui::exportTakeAs(nullptr, desktop_.services(),
                                   QString::fromStdString((files_ / "notes.wav").string()),
                                   choices));
    EXPECT_EQ(desktop_.messages.size(), 2);
    EXPECT_FALSE(std::filesystem::exists(files_ / "bad.ogg"));
}

}  // namespace
}  // namespace tunebox
