// The capture side: REC, the level monitor, echo and the manual delay.

#include <cstdlib>

#include "core/diagnostic_log.h"
#include "app/gui/about_dialog.h"
#include "app/gui/image_button.h"
#include "app/gui/level_meter.h"
#include "app/gui/main_dialog.h"
#include "app/gui/project_pages.h"
#include "core/wave_format.h"

namespace tunebox::gui {
namespace {

constexpr uint32_t kRecordSlotBytes = kEngineBlockBytes;
// 25 ms of sound: the meter moves smoothly. Deliberately not whole frames.
constexpr uint32_t kMonitorSlotBytes = 4410;
constexpr int32_t kCaptureBuffers = 3;

void meterCallback(int32_t first, int32_t second, void* context) {
    static_cast<MainDialog*>(context)->drawLevels(first, second);
}

void faultCallback(CaptureFault fault, void* context) {
    static_cast<MainDialog*>(context)->captureFaulted(fault);
}

QString faultText(CaptureFault fault) {
    return fault == CaptureFault::kOutputWrite
               ? QStringLiteral("録音ﾌｧｲﾙに書き込めません(ﾃﾞｨｽｸの空き不足?)。")
               : QStringLiteral("ﾏｲｸからの入力が止まりました。");
}

// "%ld" of the manual-delay text: leading digits, 0 for none.
int32_t parseDelay(const QString& text) {
    return static_cast<int32_t>(std::strtol(text.toStdString().c_str(), nullptr, 10));
}

}  // namespace

void MainDialog::connectCapture() {
    capture_.setEffectsEnabled(echoFlag_);
    capture_.registerLevelMeter(meterCallback, this);
    capture_.registerFaultNotice(faultCallback, this);
}

// A full disk or a microphone that went away ends the take at once, with or
// without the accompaniment: waiting for STOP would only lose more of it.
void MainDialog::captureFaulted(CaptureFault fault) {
    logAlways(capture_.lastError());
    // The notice may be run by a stop that is waiting for its buffers; the
    // take is ended from the event loop instead, outside that stop.
    QMetaObject::invokeMethod(
        this, [this, fault] { endFaultedTake(fault); }, Qt::QueuedConnection);
}

void MainDialog::endFaultedTake(CaptureFault fault) {
    const bool recording = monitorFlag_ == 0;
    if (captureActive()) {
        stopRecorder();
    }
    QString text = faultText(fault);
    if (recording) {
        text += QStringLiteral("ここまでの録音は保存しました:") + recordedName_;
    }
    services_.showStop(this, QStringLiteral("録音の中断"), text);
}

void MainDialog::record() {
    if (karaoke_.state != kIdle || recorded_.state != kIdle || recordedName_.isEmpty()) {
        return;
    }
    if (captureActive()) {
        if (monitorFlag_ != 1) {
            return;
        }
        stopMonitor();
    }
    const int32_t delay = parseDelay(manualDelayText_);
    MixingWaveCtl* source = karaokeName_.isEmpty() ? nullptr : &karaokePlayer_;
    if (capture_.startRecording(kNativeFormat, kRecordSlotBytes, kCaptureBuffers, source,
                                manualDelayFlag_, delay) == 1) {
        setFace(recordButton_, kFaceRecording);
        takeDelay_ = 0;
        // Capture runs before the accompaniment starts, so that nothing the
        // singer hears is missing from the take.
        playKaraoke();
    }
    startSyncOffsets();
}

void MainDialog::startSyncOffsets() {
    const uint32_t capturePosition = capture_.capturePosition();
    const uint32_t playbackPosition = karaokePlayer_.wavGetDevicePosition();
    capture_.syncMx().setStartPositions(playbackPosition, capturePosition);
    playbackStartText_ = QString::number(playbackPosition);
    captureStartText_ = QString::number(capturePosition);
    pushToControls();
}

void MainDialog::stopMonitor() {
    capture_.stop();
    setFace(monitorButton_, kFaceMonitor);
    monitorFlag_ = 0;
    drawLevels(0, 0);
}

void MainDialog::toggleMonitor() {
    if (monitorFlag_ == 1) {
        stopMonitor();
        return;
    }
    if (captureActive()) {
        return;
    }
    if (capture_.startLevelMonitor(kNativeFormat, kMonitorSlotBytes, kCaptureBuffers, nullptr,
                                   manualDelayFlag_, 0) == 1) {
        setFace(monitorButton_, kFaceMonitoring);
        monitorFlag_ = 1;
    }
}

void MainDialog::echoChanged() {
    readFromControls();
    capture_.setEffectsEnabled(echoFlag_);
}

void MainDialog::recordedNameChanged() {
    readFromControls();
    capture_.setOutputFileName(recordedName_.toStdString());
}

void MainDialog::manualDelayLeft() {
    readFromControls();
}

void MainDialog::drawLevels(int first, int second) {
    meter_->draw(first, second);
}

void MainDialog::showAbout() {
    AboutDialog about(services_.openUrl, this);
    about.exec();
}

void MainDialog::showHelp() {
    services_.openUrl(helpPage());
}

}  // namespace tunebox::gui
