#pragma once
// A dialog on the simulated sound card (running faster than real time) with
// a synthesised accompaniment already picked and an output file named.

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QtTest/QTest>
#include <memory>

#include "app/gui/control_ids.h"
#include "app/gui/image_button.h"
#include "app/gui/main_dialog.h"
#include "app/gui/position_trackbar.h"
#include "gui/fake_desktop.h"
#include "gui/gui_fixture.h"
#include "platform/virtual_audio.h"
#include "support/tone_signals.h"

namespace tunebox::test {

// The dialog as it looks, for review: at 1x, and rendered at 2x as on a
// high-density screen.
inline void saveScreenshot(QWidget& dialog, const QString& name) {
    QDir().mkpath(TUNEBOX_SCREENSHOT_DIR);
    dialog.grab().save(QStringLiteral(TUNEBOX_SCREENSHOT_DIR "/%1.png").arg(name));
    QImage dense(dialog.size() * 2, QImage::Format_ARGB32_Premultiplied);
    dense.setDevicePixelRatio(2);
    dense.fill(Qt::transparent);
    dialog.render(&dense);
    dense.save(QStringLiteral(TUNEBOX_SCREENSHOT_DIR "/%1@2x.png").arg(name));
}

class SessionTest : public GuiTest {
  protected:
    // Speed: virtual seconds per real second.
    void start(double songSeconds, double speed, bool microphoneFails = false) {
        startWith(songSeconds, speed, {.failInputOpen = microphoneFails});
    }
    // A song of 0 seconds picks none: REC records the voice alone.
    void startWith(double songSeconds, double speed, VirtualAudioConfig config) {
        config.speed = speed;
        config.loopbackGain = 0.25f;
        if (config.voice.empty()) {
            config.voice = loudVoice(60);
        }
        audio_ = std::make_shared<VirtualAudio>(std::move(config));
        desktop_.audio = audio_;
        song_ = (configDir() / "song.wav").string();
        take_ = (configDir() / "take.wav").string();
        if (songSeconds > 0) {
            writeTone(song_, songSeconds);
        }
        dialog_ = std::make_unique<gui::MainDialog>(desktop_.services());
        dialog_->show();
        if (songSeconds > 0) {
            desktop_.openAnswer = {QString::fromStdString(song_)};
            click(gui::kKaraokePick);
        }
        control<QLineEdit>(gui::kRecordedName)->setText(QString::fromStdString(take_));
    }
    void TearDown() override { dialog_.reset(); }

    template <class Widget = QWidget>
    Widget* control(gui::ControlId id) const {
        return dialog_->findChild<Widget*>(gui::controlName(id));
    }
    void click(gui::ControlId id) { QTest::mouseClick(control(id), Qt::LeftButton); }
    // A key typed into the window, where the focus is, as a user types it.
    void press(Qt::Key key) {
        QWidget* focus = QApplication::focusWidget();
        QTest::keyClick(focus != nullptr ? focus : dialog_.get(), key);
    }
    // Keys reach only the active window.
    void activate() {
        dialog_->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(dialog_.get()));
    }
    int face(gui::ControlId id) const { return control<gui::ImageButton>(id)->face(); }
    template <class Condition>
    bool waitFor(Condition condition, int milliseconds = 20000) {
        return QTest::qWaitFor(condition, milliseconds);
    }
    const PlayerStatus& karaoke() const { return dialog_->karaokeStatus(); }
    TakeController& controller() { return dialog_->controller(); }

    FakeDesktop desktop_;
    std::shared_ptr<VirtualAudio> audio_;
    std::string song_;
    std::string take_;
    std::unique_ptr<gui::MainDialog> dialog_;
};

}  // namespace tunebox::test
