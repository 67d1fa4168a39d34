// The window speaks Japanese or English: the Japanese captions are the
// dialog's original texts, the English leave nothing untranslated, and
// every control explains itself in a tooltip.

#include <QAbstractButton>
#include <QAction>
#include <QCoreApplication>
#include <QLabel>
#include <QTreeWidget>
#include <QtTest/QTest>
#include <algorithm>
#include <fstream>

#include "app/gui/control_ids.h"
#include "app/gui/language.h"
#include "app/gui/main_dialog.h"
#include "gui/fake_desktop.h"
#include "gui/gui_fixture.h"

namespace tunebox::test {
namespace {

using namespace gui;

TEST(LanguageChoice, TheOptionThenTheSettingThenTheLocaleDecide) {
    const QLocale japan(QLocale::Japanese, QLocale::Japan);
    const QLocale usa(QLocale::English, QLocale::UnitedStates);
    EXPECT_EQ(chooseLanguage("", "", japan), Language::kJapanese);
    for (const QLocale& other : {usa, QLocale(QLocale::German), QLocale::c()}) {
        EXPECT_EQ(chooseLanguage("", "", other), Language::kEnglish) << other.name().toStdString();
    }
    EXPECT_EQ(chooseLanguage("", "ja", usa), Language::kJapanese);
    EXPECT_EQ(chooseLanguage("", " EN ", japan), Language::kEnglish);
    EXPECT_EQ(chooseLanguage("", "fr", japan), Language::kJapanese) << "an unknown setting";
    EXPECT_EQ(chooseLanguage("en", "ja", japan), Language::kEnglish);
    EXPECT_EQ(chooseLanguage("ja", "en", usa), Language::kJapanese);
}

const ControlId kExplained[] = {
    kKaraokePick,     kKaraokePlay,      kKaraokeStop,         kKaraokePause,
    kLeftButton,      kRightButton,      kRecordedPick,        kKaraokeName,
    kKaraokeTrackbar, kTimeText,         kRecordedName,        kRecordedTrackbar,
    kRecordedPlay,    kRecorderStop,     kRecordedPause,       kRecord,
    kEchoCheck,       kManualDelayCheck, kAboutButton,         kHelpButton,
    kDelayReadout,    kManualDelayEdit,  kCaptureStartReadout, kPlaybackStartReadout,
    kMonitor,         kMeterFrame,       kVoiceFileCheck,      kNudgeSpin,
    kNudgeSave,
};

// Every text the window shows before anything happens: captions, statics,
// the list's headings, the menu entry and the tooltips.
QStringList shownTexts(const MainDialog& dialog) {
    QStringList texts;
    for (const QAbstractButton* button : dialog.findChildren<QAbstractButton*>()) {
        texts << button->text();
    }
    for (const QLabel* label : dialog.findChildren<QLabel*>()) {
        texts << label->text();
    }
    for (const QAction* action : dialog.actions()) {
        texts << action->text();
    }
    const QTreeWidgetItem* headings = dialog.findChild<QTreeWidget*>()->headerItem();
    texts << headings->text(0) << headings->text(1);
    for (const QWidget* widget : dialog.findChildren<QWidget*>()) {
        texts << widget->toolTip();
    }
    return texts;
}

bool japanese(const QString& text) {
    return std::any_of(text.begin(), text.end(), [](QChar c) {
        const char16_t code = c.unicode();
        return (code >= 0x3000 && code <= 0x30ff) || (code >= 0x4e00 && code <= 0x9fff) ||
               (code >= 0xff00 && code <= 0xffef);
    });
}

class WindowLanguageTest : public GuiTest {
  protected:
    template <class Widget = QWidget>
    Widget* control(const MainDialog& dialog, ControlId id) {
        return dialog.findChild<Widget*>(controlName(id));
    }
    void expectEveryControlExplained(const MainDialog& dialog) {
        for (ControlId id : kExplained) {
            EXPECT_FALSE(control(dialog, id)->toolTip().isEmpty()) << id;
        }
    }
    // The message a refused accompaniment gives, "caption|text".
    QString refusalOf(MainDialog& dialog, const QString& path) {
        desktop_.openAnswer = {path};
        QTest::mouseClick(control(dialog, kKaraokePick), Qt::LeftButton);
        return desktop_.messages.isEmpty() ? QString() : desktop_.messages.last();
    }

    FakeDesktop desktop_;
};

TEST_F(WindowLanguageTest, JapaneseCaptionsAreTheOriginalTexts) {
    const Translations translations(Language::kJapanese);
    ASSERT_TRUE(translations.loaded());
    MainDialog dialog(desktop_.services());
    EXPECT_EQ(control<QAbstractButton>(dialog, kKaraokePick)->text(), "ｶﾗｵｹﾌｧｲﾙ選択");
    EXPECT_EQ(control<QAbstractButton>(dialog, kRecordedPick)->text(), "録音ﾌｧｲﾙ");
    EXPECT_EQ(control<QAbstractButton>(dialog, kLeftButton)->text(), "←");
    EXPECT_EQ(control<QAbstractButton>(dialog, kRightButton)->text(), "→");
    EXPECT_EQ(control<QAbstractButton>(dialog, kEchoCheck)->text(), "エコー効果");
    EXPECT_EQ(control<QAbstractButton>(dialog, kManualDelayCheck)->text(), "手動遅れ設定");
    const QStringList texts = shownTexts(dialog);
    EXPECT_TRUE(texts.contains("再生遅れ："));
    EXPECT_TRUE(texts.contains("手動固定："));
    EXPECT_TRUE(texts.contains("ﾌｧｲﾙ名"));
    EXPECT_EQ(dialog.findChild<QAction*>("16")->text(), "ﾊﾞｰｼﾞｮﾝ情報(Tunebox) (&A)...");
    expectEveryControlExplained(dialog);

    const auto junk = configDir() / "notes.mp3";
    std::ofstream(junk) << "not a sound file";
    const QString path = QString::fromStdString(junk.string());
    EXPECT_EQ(refusalOf(dialog, path), "ﾌｧｲﾙ選択の失敗|ｻﾎﾟｰﾄされないﾌｧｲﾙﾌｫｰﾏｯﾄ:" + path);

    // Qt's own pickers and buttons come with it.
    EXPECT_NE(QCoreApplication::translate("QFileDialog", "Look in:"), "Look in:");
}

TEST_F(WindowLanguageTest, EnglishLeavesNoJapaneseAndQtSpeaksEnglishToo) {
    MainDialog dialog(desktop_.services());
    for (const QString& text : shownTexts(dialog)) {
        EXPECT_FALSE(japanese(text)) << text.toStdString();
    }
    expectEveryControlExplained(dialog);
    EXPECT_EQ(QCoreApplication::translate("QFileDialog", "Look in:"), "Look in:");

    const QString path = QString::fromStdString((configDir() / "missing.wav").string());
    EXPECT_EQ(refusalOf(dialog, path), "File selection failed|Unsupported file format: " + path);
}

}  // namespace
}  // namespace tunebox::test
