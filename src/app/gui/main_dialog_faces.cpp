// What the take controller shows: button faces, the meter, the tickers and
// the read-outs.

#include <QLabel>

#include "app/gui/image_button.h"
#include "app/gui/level_meter.h"
#include "app/gui/main_dialog.h"

namespace tunebox::gui {

void MainDialog::showFace(TakeButton button, bool lit) {
    switch (button) {
        case TakeButton::kAccompanimentPlay:
            return setFace(karaokePlay_, lit ? kFacePlaying : kFacePlay);
        case TakeButton::kAccompanimentPause:
            return setFace(karaokePause_, lit ? kFacePaused : kFacePause);
        case TakeButton::kRecordedPlay:
            return setFace(recordedPlay_, lit ? kFacePlaying : kFacePlay);
        case TakeButton::kRecordedPause:
            return setFace(recordedPause_, lit ? kFacePaused : kFacePause);
        case TakeButton::kRecord:
            return setFace(recordButton_, lit ? kFaceRecording : kFaceRecord);
        case TakeButton::kMonitor:
            return setFace(monitorButton_, lit ? kFaceMonitoring : kFaceMonitor);
    }
}

void MainDialog::showLevels(int32_t first, int32_t second) {
    meter_->draw(first, second);
}

void MainDialog::tickerChanged(TakePlayer player, bool running) {
    QTimer& timer = player == TakePlayer::kAccompaniment ? karaokeTimer_ : recordedTimer_;
    if (running) {
        timer.start(kTickMilliseconds);
    } else {
        timer.stop();
    }
}

void MainDialog::showAccompaniment(const AccompanimentReadout& readout) {
    if (readout.trackbar) {
        karaokeTrackbar_->setValue(*readout.trackbar);
    }
    delayReadout_ = delayText(readout.delay);
    delayLabel_->setText(delayReadout_);
    showTime(readout.position);
}

void MainDialog::showRecordedTrackbar(int value) {
    recordedTrackbar_->setValue(value);
}

void MainDialog::showStartPositions(uint32_t playback, uint32_t capture) {
    playbackStartText_ = QString::number(playback);
    captureStartText_ = QString::number(capture);
    pushToControls();
}

void MainDialog::recorderStopping(bool stopping) {
    recorderStop_->setEnabled(!stopping);
    recordedPlay_->setEnabled(!stopping);
    // Only for a take that went on to its end: a take cut short by a fault
    // has said so already, and its voice file stopped with it.
    const CRecWav& capture = controller_.capture();
    const std::string& voiceProblem = capture.voiceFileError();
    if (!stopping && !voiceProblem.empty() && capture.fault() == CaptureFault::kNone) {
        // Said once the take is finished, from the event loop, outside the stop.
        QMetaObject::invokeMethod(
            this,
            [this, text = QString::fromStdString(voiceProblem)] {
                services_.showNote(this, tr("Save voice separately"),
                                   tr("The voice file stops short; the recording file is "
                                      "saved to the end.\n") +
                                       text);
            },
            Qt::QueuedConnection);
    }
}

}  // namespace tunebox::gui
