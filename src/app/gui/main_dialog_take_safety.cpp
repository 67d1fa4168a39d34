// What stands between the singer and a lost take: the question before REC
// records over a file, the repair offered for a take that was cut short, and
// the take finished, not dropped, when the dialog or the session ends.

#include <QFileInfo>
#include <QLineEdit>
#include <QTimer>

#include "app/gui/main_dialog.h"
#include "platform/settings.h"
#include "playback/wav_repair.h"
#include "session/voice_file.h"

namespace tunebox::gui {
namespace {

QString repairCaption() {
    return MainDialog::tr("Repair recording file");
}

}  // namespace

// REC's own precondition, checked before anything is asked: a press that
// would be ignored asks nothing.
bool MainDialog::recordingCanStart() const {
    return playersIdle() && (!controller_.captureActive() || monitorOn() == 1);
}

// The take and, for a take over an accompaniment, its voice file: each one
// that exists and that the save picker has not already asked about.
QStringList MainDialog::filesToReplace() const {
    QStringList existing;
    if (QFileInfo(recordedName_).isFile() && recordedName_ != overwriteAgreed_) {
        existing << recordedName_;
    }
    if (voiceFileFlag_ == 1 && !karaokeName_.isEmpty()) {
        const QString voice = QString::fromStdString(voiceFilePath(recordedName_.toStdString()));
        if (QFileInfo(voice).isFile()) {
            existing << voice;
        }
    }
    return existing;
}

// One question covers both files: the take and its voice belong together.
bool MainDialog::overwriteAgreed() {
    const QStringList existing = filesToReplace();
    if (existing.isEmpty()) {
        return true;
    }
    return services_.askYesNo(this, tr("Overwrite recording file"),
                              tr("%1\nalready exists. Record over it?").arg(existing.join('\n')));
}

// The file of the last take is named again at start, and offered for repair
// once the dialog is up when a crash left it unfinished.
void MainDialog::restoreLastTake() {
    const QString last = QString::fromStdString(readLastTake());
    if (last.isEmpty()) {
        return;
    }
    recordedNameEdit_->setText(last);
    QTimer::singleShot(0, this, [this, last] { offerRepair(last); });
}

void MainDialog::offerRepair(const QString& path) {
    const WavInspection inspection = inspectWav(path.toStdString());
    if (inspection.condition != WavCondition::kUnfinished) {
        return;
    }
    const QString question = tr("%1\nwas cut off in the middle of a take. Repair it?\n%2")
                                 .arg(path, QString::fromStdString(inspection.detail));
    if (!services_.askYesNo(this, repairCaption(), question)) {
        return;
    }
    const RepairResult result = repairWav(path.toStdString());
    QString detail = QString::fromStdString(result.message);
    if (const auto voice = repairVoiceFile(path.toStdString())) {
        detail += '\n' +
                  QString::fromStdString(voiceFilePath(path.toStdString()) + ": " + voice->message);
    }
    if (!result.repaired) {
        services_.showStop(this, repairCaption(), tr("The repair failed: ") + detail);
        return;
    }
    // The file is a take worth keeping now, not the wreck the picker was
    // told could be replaced.
    overwriteAgreed_.clear();
    services_.showNote(this, repairCaption(), tr("Repaired: ") + detail);
}

void MainDialog::finishTake() {
    if (controller_.captureActive()) {
        controller_.stopRecorder();
    }
}

void MainDialog::done(int result) {
    finishTake();
    QDialog::done(result);
}

}  // namespace tunebox::gui
