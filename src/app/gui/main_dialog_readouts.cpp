// What the singer reads off the dialog beyond the faces: the delay in
// milliseconds, where the take's delay came from, the clip light and the
// clip count of a finished take, and the audition's time.

#include <QLabel>

#include "app/gui/clip_light.h"
#include "app/gui/main_dialog.h"
#include "core/wave_format.h"

namespace tunebox::gui {

QString MainDialog::delayText(int32_t bytes) const {
    const double milliseconds = bytes * 1000.0 / kNativeBytesPerSecond;
    return tr("%1 B (%2 ms)").arg(bytes).arg(milliseconds, 0, 'f', 1);
}

// The log has the same line; shown as well, so that the singer sees which
// correction the take got.
void MainDialog::showCalibration(const std::optional<DeviceCalibration>& calibration) {
    calibrationLabel_->setText(calibration
                                   ? tr("Delay from positions + calibration of %1 (%2 B)")
                                         .arg(QString::fromStdString(calibration->devicePair))
                                         .arg(calibration->correctionBytes)
                                   : QString());
}

// The time box follows whichever player is heard; the audition's is the
// one that moves while it plays.
void MainDialog::showRecordedPosition(uint32_t bytes) {
    showTime(bytes);
}

void MainDialog::blockClipped(uint32_t) {
    clipLight_->clipped();
}

QString MainDialog::clippedText(uint32_t clippedBlocks) const {
    return tr("Blocks of the take that reached full scale (clipped), each about half a second: "
              "%1.\nSing a little further from the microphone or turn its level down, then "
              "record again.")
        .arg(clippedBlocks);
}

// A take a fault cut short says this in its own message instead.
void MainDialog::takeEnded(uint32_t clippedBlocks) {
    if (clippedBlocks == 0 || controller_.capture().fault() != CaptureFault::kNone) {
        return;
    }
    // Said from the event loop, outside the stop that ended the take.
    QMetaObject::invokeMethod(
        this,
        [this, clippedBlocks] {
            services_.showNote(this, tr("The take clipped"), clippedText(clippedBlocks));
        },
        Qt::QueuedConnection);
}

// The playback stalled in a way the take could not make good: the singer
// learns from where to listen again, and that the nudge or another take
// puts it right.
void MainDialog::takeOutOfSync(uint64_t fromBytes) {
    const uint64_t seconds = fromBytes / kNativeBytesPerSecond;
    const QString moment = QStringLiteral("%1:%2")
                               .arg(seconds / 60, 2, 10, QLatin1Char('0'))
                               .arg(seconds % 60, 2, 10, QLatin1Char('0'));
    QMetaObject::invokeMethod(
        this,
        [this, moment] {
            services_.showNote(this, tr("The take is out of sync"),
                               tr("The playback stalled and the take is out of sync from %1.\n"
                                  "Move the voice with the sync nudge and listen again, or "
                                  "record again.")
                                   .arg(moment));
        },
        Qt::QueuedConnection);
}

}  // namespace tunebox::gui
