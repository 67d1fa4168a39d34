// The dialog as built: its controls, captions, fonts and colours, the
// settings it reads and writes, and the file pickers.

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>
#include <QTreeWidget>
#include <QtTest/QTest>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>

#include "app/gui/control_ids.h"
#include "app/gui/image_button.h"
#include "app/gui/main_dialog.h"
#include "app/gui/position_trackbar.h"
#include "gui/fake_desktop.h"
#include "gui/gui_fixture.h"
#include "platform/settings.h"

namespace tunebox::test {
namespace {

using namespace gui;

template <class Widget = QWidget>
Widget* control(const MainDialog& dialog, ControlId id) {
    return dialog.findChild<Widget*>(controlName(id));
}

class MainDialogLayoutTest : public GuiTest {
  protected:
    FakeDesktop desktop_;
};

TEST_F(MainDialogLayoutTest, EveryControlCarriesItsIdentifier) {
    MainDialog dialog(desktop_.services());
    for (int id :
         {1001, 1002, 1003, 1004, 1005, 1006, 1007, 1014, 1015, 1016, 1017, 1020, 1021, 1026}) {
        EXPECT_NE(control<ImageButton>(dialog, ControlId(id)), nullptr) << id;
    }
    for (int id : {1008, 1009, 1010, 1011, 1012, 1013, 1018, 1019, 1022, 1023, 1024, 1025, 1028}) {
        EXPECT_NE(control(dialog, ControlId(id)), nullptr) << id;
    }
    EXPECT_NE(dialog.findChild<QAction*>("16"), nullptr);
    EXPECT_EQ(dialog.contextMenuPolicy(), Qt::ActionsContextMenu);
}

TEST_F(MainDialogLayoutTest, ControlsStartAsTheSessionExpects) {
    MainDialog dialog(desktop_.services());
    for (ControlId id : {kKaraokeTrackbar, kRecordedTrackbar}) {
        const auto* trackbar = control<PositionTrackbar>(dialog, id);
        EXPECT_EQ(trackbar->minimum(), 0);
        EXPECT_EQ(trackbar->maximum(), 10000);
        EXPECT_EQ(trackbar->pageStep(), 100);
        EXPECT_EQ(trackbar->value(), 0);
    }
    const auto* list = control<QTreeWidget>(dialog, kTrackListView);
    EXPECT_TRUE(list->isHidden());
    EXPECT_EQ(list->headerItem()->text(0), "No.");
    EXPECT_EQ(list->headerItem()->text(1), "File name");

    const auto* time = control<QLabel>(dialog, kTimeText);
    EXPECT_EQ(time->text(), "00:00:00");
    EXPECT_EQ(time->palette().color(QPalette::WindowText), QColor(0, 255, 255));
    EXPECT_EQ(time->palette().color(QPalette::Window), QColor(Qt::black));
    EXPECT_EQ(time->font().pixelSize(), 16);
    EXPECT_TRUE(QFontInfo(time->font()).family().contains("Gothic", Qt::CaseInsensitive) ||
                QFontInfo(time->font()).family().contains("ゴシック"));

    EXPECT_TRUE(control<QCheckBox>(dialog, kEchoCheck)->isChecked());
    EXPECT_FALSE(control<QCheckBox>(dialog, kManualDelayCheck)->isChecked());
    EXPECT_EQ(control<ImageButton>(dialog, kKaraokePlay)->face(), kFacePlay);
    EXPECT_EQ(control<ImageButton>(dialog, kRecord)->face(), kFaceRecord);
    EXPECT_EQ(control<ImageButton>(dialog, kMonitor)->face(), kFaceMonitor);
    EXPECT_EQ(control<ImageButton>(dialog, kKaraokePick)->face(), kNoFace);

    auto* manual = control<QLineEdit>(dialog, kManualDelayEdit);
    manual->clear();
    QTest::keyClicks(manual, "-12a3");
    EXPECT_EQ(manual->text(), "123") << "numbers only";
}

// How the file spells the values is the settings' own test; here that a
// dialog starting without one shows no delay, and that closing writes what
// the next dialog reads.
TEST_F(MainDialogLayoutTest, DelayValuesWrittenAreReadAtTheNextStart) {
    {
        MainDialog dialog(desktop_.services());
        auto* manual = control<QLineEdit>(dialog, kManualDelayEdit);
        EXPECT_TRUE(manual->text().isEmpty());
        manual->setText("4410");
        QTest::mouseClick(control(dialog, kManualDelayCheck), Qt::LeftButton);
    }
    MainDialog again(desktop_.services());
    EXPECT_EQ(control<QLineEdit>(again, kManualDelayEdit)->text(), "4410");
    EXPECT_TRUE(control<QCheckBox>(again, kManualDelayCheck)->isChecked());
}

TEST_F(MainDialogLayoutTest, PickersOpenWhereTheLastPickWasMade) {
    const std::string song = std::string(TUNEBOX_TESTDATA_DIR) + "/";
    std::filesystem::create_directories(configDir() / "takes");
    const auto take = configDir() / "takes" / "take1.wav";
    {
        MainDialog dialog(desktop_.services());
        desktop_.saveAnswer = QString::fromStdString(take.string());
        QTest::mouseClick(control(dialog, kRecordedPick), Qt::LeftButton);
        EXPECT_EQ(control<QLineEdit>(dialog, kRecordedName)->text(), desktop_.saveAnswer);
        ASSERT_EQ(desktop_.requests.size(), 1u);
        EXPECT_EQ(desktop_.requests[0].filter, "*.wav|*.wav|All Files (*.*)|*.*||");
        EXPECT_EQ(desktop_.requests[0].defaultSuffix, "wav");
        EXPECT_TRUE(desktop_.requests[0].initialFolder.isEmpty());
    }
    MainDialog dialog(desktop_.services());
    QTest::mouseClick(control(dialog, kRecordedPick), Qt::LeftButton);
    ASSERT_EQ(desktop_.requests.size(), 2u);
    EXPECT_EQ(desktop_.requests[1].initialFolder.toStdString(),
              (configDir() / "takes").string() + "/");
    EXPECT_EQ(readFolder(FolderPicker::kMic), (configDir() / "takes").string() + "/");
}

TEST_F(MainDialogLayoutTest, UnsupportedAccompanimentIsRefusedWithAStopMessage) {
    const auto junk = configDir() / "notes.mp3";
    std::ofstream(junk) << "not a sound file at all";
    // A WAVE file declaring one sample per second is refused the same way.
    const std::filesystem::path oneHertz =
        std::string(TUNEBOX_SOURCE_DIR) + "/fuzz/corpus/fuzz_wav_reader/refused-rate-1hz";
    MainDialog dialog(desktop_.services());
    for (const auto& refused : {junk, oneHertz}) {
        desktop_.openAnswer = {QString::fromStdString(refused.string()), "/ignored/second.wav"};
        QTest::mouseClick(control(dialog, kKaraokePick), Qt::LeftButton);
        EXPECT_EQ(desktop_.messages.back(), "File selection failed|Unsupported file format: " +
                                                QString::fromStdString(refused.string()));
    }
    ASSERT_EQ(desktop_.messages.size(), 2);
    EXPECT_EQ(dialog.currentIndex(), -1);
    EXPECT_TRUE(control<QLineEdit>(dialog, kKaraokeName)->text().isEmpty());
    const QString patterns = QStringLiteral(
        "*.wav;*.mp3;*.mp2;*.mpa;*.mp1;*.flac;*.ogg;*.oga;*.opus;*.aif;*.aiff;*.aifc;*.caf;*.w64;"
        "*.rf64;*.txt");
    EXPECT_EQ(desktop_.requests[0].filter,
              patterns + QStringLiteral("|") + patterns + QStringLiteral("|All Files (*.*)|*.*||"));
    EXPECT_EQ(desktop_.requests[0].defaultSuffix, "WAV");
    EXPECT_TRUE(desktop_.requests[0].multiSelect);
    EXPECT_TRUE(readFolder(FolderPicker::kKaraoke).empty()) << "a refused file is not remembered";
}

TEST_F(MainDialogLayoutTest, HelpOpensTheProjectPageInTheBrowser) {
    MainDialog dialog(desktop_.services());
    QTest::mouseClick(control(dialog, kHelpButton), Qt::LeftButton);
    ASSERT_EQ(desktop_.opened.size(), 1u);
    EXPECT_TRUE(desktop_.opened[0].isLocalFile());
    EXPECT_TRUE(desktop_.opened[0].toLocalFile().endsWith("help.html"));
}

// A stretched window gives its room to the path boxes and the trackbars;
// every other control keeps its height, the time box and the meter their
// size.
TEST_F(MainDialogLayoutTest, RowsKeepTheirHeightWhenTheWindowIsStretched) {
    MainDialog dialog(desktop_.services());
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    QList<QWidget*> controls;
    for (QWidget* widget : dialog.findChildren<QWidget*>()) {
        if (widget->isVisible() && widget->parentWidget() == &dialog) {
            controls << widget;
        }
    }
    ASSERT_GT(controls.size(), 25);
    std::map<QWidget*, QSize> before;
    for (QWidget* widget : controls) {
        before[widget] = widget->size();
    }
    dialog.resize(dialog.width() * 2, dialog.height() * 2);
    QTest::qWait(50);

    const QList<QWidget*> stretching = {
        control(dialog, kKaraokeName), control(dialog, kRecordedName),
        control(dialog, kKaraokeTrackbar), control(dialog, kRecordedTrackbar)};
    for (QWidget* widget : controls) {
        const QString name = widget->objectName() + ' ' + widget->metaObject()->className();
        EXPECT_EQ(widget->height(), before[widget].height()) << name.toStdString();
        if (stretching.contains(widget)) {
            EXPECT_GT(widget->width(), before[widget].width() * 3 / 2) << name.toStdString();
        }
    }
    for (ControlId fixed : {kTimeText, kMeterFrame}) {
        EXPECT_EQ(control(dialog, fixed)->size(), before[control(dialog, fixed)]) << fixed;
    }
}

TEST_F(MainDialogLayoutTest, HoveredButtonLetsGoWhenThePointerLeavesOrFocusGoes) {
    MainDialog dialog(desktop_.services());
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    auto* play = control<ImageButton>(dialog, kKaraokePlay);
    QTest::mouseMove(play, play->rect().center());
    EXPECT_TRUE(play->hovered());
    EXPECT_EQ(QWidget::mouseGrabber(), play);
    QTest::mouseMove(play, play->rect().bottomRight() + QPoint(30, 30));
    EXPECT_FALSE(play->hovered());
    EXPECT_EQ(QWidget::mouseGrabber(), nullptr);

    QTest::mouseMove(play, play->rect().center());
    play->setFocus();
    control(dialog, kManualDelayEdit)->setFocus();
    EXPECT_FALSE(play->hovered());
    EXPECT_EQ(QWidget::mouseGrabber(), nullptr);
}

TEST_F(MainDialogLayoutTest, AboutShowsTheMakersPageLink) {
    MainDialog dialog(desktop_.services());
    QString title;
    QTimer::singleShot(0, [&] {
        QWidget* about = QApplication::activeModalWidget();
        ASSERT_NE(about, nullptr);
        title = about->windowTitle();
        QDir().mkpath(TUNEBOX_SCREENSHOT_DIR);
        about->grab().save(TUNEBOX_SCREENSHOT_DIR "/about.png");
        for (QLabel* label : about->findChildren<QLabel*>()) {
            if (label->text().contains("href")) {
                emit label->linkActivated(label->text().section('"', 1, 1));
            }
        }
        about->close();
    });
    dialog.findChild<QAction*>("16")->trigger();
    EXPECT_EQ(title, "About Tunebox");
    ASSERT_EQ(desktop_.opened.size(), 1u);
    EXPECT_TRUE(desktop_.opened[0].toLocalFile().endsWith("about.html"));
}

// A figure, not a limit: how long the first frame takes to reach the screen.
TEST_F(MainDialogLayoutTest, FirstFrameReachesTheScreen) {
    struct PaintWatch : QObject {
        qint64 at = -1;
        QElapsedTimer* clock = nullptr;
        bool eventFilter(QObject*, QEvent* event) override {
            if (event->type() == QEvent::Paint && at < 0) {
                at = clock->nsecsElapsed();
            }
            return false;
        }
    };
    QElapsedTimer clock;
    clock.start();
    MainDialog dialog(desktop_.services());
    PaintWatch watch;
    watch.clock = &clock;
    dialog.installEventFilter(&watch);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitFor([&] { return watch.at >= 0; }, 10000));
    const double dialogMs = watch.at / 1e6;
    const double applicationMs = applicationStartNanoseconds / 1e6;
    std::cout << "start-up: QApplication " << applicationMs << " ms, dialog built and first frame "
              << dialogMs << " ms, together " << applicationMs + dialogMs << " ms\n";
    RecordProperty("first_paint_ms", std::to_string(applicationMs + dialogMs));
}

}  // namespace
}  // namespace tunebox::test
