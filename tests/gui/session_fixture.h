#pragma once
// A dialog on the simulated sound card (running faster than real time) with
// a synthesised accompaniment already picked and an output file named.

#include <QDir>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QtTest/QTest>
#include <cmath>
#include <memory>

#include "app/gui/control_ids.h"
#include "app/gui/image_button.h"
#include "app/gui/main_dialog.h"
#include "app/gui/position_trackbar.h"
#include "gui/fake_desktop.h"
#include "gui/gui_fixture.h"
#include "platform/virtual_audio.h"
#include "playback/wav_writer.h"

namespace tunebox::test {

// A 440 Hz tone, `seconds` long, as a native WAV file.
inline void writeTone(const std::string& path, double seconds) {
    const auto frames = static_cast<std::size_t>(seconds * 44100);
    std::vector<int16_t> samples(frames * 2);
    for (std::size_t i = 0; i < frames; ++i) {
        const auto value = static_cast<int16_t>(8000 * std::sin(2 * M_PI * 440 * i / 44100.0));
        samples[2 * i] = value;
        samples[2 * i + 1] = value;
    }
    WaveWriter writer;
    wavResetWriter(writer);
    ASSERT_EQ(wavCreateFile(path, writer), 1);
    ASSERT_EQ(wavWrite(writer, reinterpret_cast<const uint8_t*>(samples.data()),
                       static_cast<uint32_t>(samples.size() * 2)),
              1);
    ASSERT_EQ(wavCloseFile(writer), 1);
}

// A singer: a loud 220 Hz tone for the meter to show.
inline std::vector<int16_t> loudVoice(double seconds) {
    const auto frames = static_cast<std::size_t>(seconds * 44100);
    std::vector<int16_t> samples(frames * 2);
    for (std::size_t i = 0; i < frames; ++i) {
        samples[2 * i] = static_cast<int16_t>(30000 * std::sin(2 * M_PI * 220 * i / 44100.0));
        samples[2 * i + 1] = static_cast<int16_t>(20000 * std::sin(2 * M_PI * 220 * i / 44100.0));
    }
    return samples;
}

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
    // Speed: virtual seconds per real second. Without the pick the song is
    // written but not chosen, for a take of the voice alone.
    void start(double songSeconds, double speed, bool pickSong = true) {
        auto config = VirtualAudioConfig{};
        config.speed = speed;
        config.loopbackGain = 0.25f;
        config.voice = loudVoice(60);
        audio_ = std::make_shared<VirtualAudio>(std::move(config));
        desktop_.audio = audio_;
        song_ = (configDir() / "song.wav").string();
        take_ = (configDir() / "take.wav").string();
        writeTone(song_, songSeconds);
        dialog_ = std::make_unique<gui::MainDialog>(desktop_.services());
        dialog_->show();
        if (pickSong) {
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
    int face(gui::ControlId id) const { return control<gui::ImageButton>(id)->face(); }
    template <class Condition>
    bool waitFor(Condition condition, int milliseconds = 20000) {
        return QTest::qWaitFor(condition, milliseconds);
    }
    const gui::PlayerStatus& karaoke() const { return dialog_->karaokeStatus(); }
    const gui::PlayerStatus& recorded() const { return dialog_->recordedStatus(); }
    // The accompaniment player's own idea of where it is, in bytes.
    uint32_t enginePosition() {
        uint32_t minutes = 0, seconds = 0, frames = 0;
        dialog_->karaokePlayer().wavGetTime(minutes, seconds, frames);
        return (minutes * 4500 + seconds * 75 + frames) * 2352;
    }

    FakeDesktop desktop_;
    std::shared_ptr<VirtualAudio> audio_;
    std::string song_;
    std::string take_;
    std::unique_ptr<gui::MainDialog> dialog_;
};

}  // namespace tunebox::test
