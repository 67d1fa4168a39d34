// The capture side: REC and why it may refuse, the level monitor, echo, the
// manual delay, and a take that a fault cut short.

#include "app/gui/about_dialog.h"
#include "app/gui/main_dialog.h"
#include "core/diagnostic_log.h"
#include "platform/settings.h"
#include "session/delay_text.h"

namespace tunebox::gui {
namespace {

QString faultText(CaptureFault fault) {
    return fault == CaptureFault::kOutputWrite
               ? MainDialog::tr("The recording file cannot be written (is the disk full?). ")
               : MainDialog::tr("The microphone stopped sending sound. ");
}

// The first line for the singer; the controller's own line, naming the
// file or the device, follows it.
QString refusalText(RecRefusal kind) {
    switch (kind) {
        case RecRefusal::kNoOutputName:
            return MainDialog::tr("Name the recording file first.");
        case RecRefusal::kNoFolder:
            return MainDialog::tr("The recording file's folder does not exist.");
        case RecRefusal::kFolderNotWritable:
            return MainDialog::tr("The recording file's folder cannot be written to.");
        case RecRefusal::kNoRoom:
            return MainDialog::tr(
                "Not enough disk space (the take needs the song's length and a minute more).");
        case RecRefusal::kCaptureFailed:
        case RecRefusal::kNone:
            break;
    }
    return MainDialog::tr("The recording cannot start (check the microphone).");
}

}  // namespace

void MainDialog::captureFaulted(CaptureFault fault) {
    logAlways(controller_.capture().lastError());
    // The notice may be run by a stop that is waiting for its buffers; the
    // take is ended from the event loop instead, outside that stop.
    QMetaObject::invokeMethod(
        this, [this, fault] { endFaultedTake(fault); }, Qt::QueuedConnection);
}

void MainDialog::endFaultedTake(CaptureFault fault) {
    QString text = faultText(fault);
    const bool kept = controller_.endFaultedTake();
    // One box for the take: its clipping is told here, the file it is in last.
    const uint32_t clipped = controller_.capture().clippedBlocks();
    if (clipped > 0) {
        text += '\n' + clippedText(clipped) + '\n';
    }
    if (kept) {
        text += tr("What was recorded so far is saved: ") + recordedName_;
    }
    services_.showStop(this, tr("Recording interrupted"), text);
}

void MainDialog::record() {
    if (!recordingCanStart() || !overwriteAgreed()) {
        return;
    }
    RecordRequest request;
    if (!karaokeName_.isEmpty()) {
        request.track = currentTrack();
    }
    request.manualFlag = manualDelayFlag_;
    request.manualDelay = parseDelayText(manualDelayText_.toStdString());
    request.voiceFile = voiceFileFlag_ == 1;
    const RecStart started = controller_.rec(request);
    if (started.capturing) {
        overwriteAgreed_.clear();
        writeLastTake(recordedName_.toStdString());
        if (started.calibration) {
            logAlways(delaySourceNote(*started.calibration));
        }
        showCalibration(started.calibration);
        tellPlayFailure(started.accompaniment, karaokeName_, controller_.accompanimentPlayer());
    } else if (started.refusalKind != RecRefusal::kNone) {
        logAlways(started.refusal);
        services_.showStop(
            this, tr("Cannot record"),
            refusalText(started.refusalKind) + '\n' + QString::fromStdString(started.refusal));
    }
}

void MainDialog::toggleMonitor() {
    const bool starting = monitorOn() == 0 && !controller_.captureActive();
    if (controller_.toggleMonitor(manualDelayFlag_) == 0 && starting) {
        tellMonitorFailure();
    }
}

void MainDialog::echoChanged() {
    readFromControls();
    controller_.setEcho(echoFlag_);
}

void MainDialog::manualDelayLeft() {
    readFromControls();
}

void MainDialog::showAbout() {
    AboutDialog about(services_.openUrl, this);
    about.exec();
}

}  // namespace tunebox::gui
