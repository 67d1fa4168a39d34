// What stands between the singer and a lost take: the question before REC
// records over a file, and the take finished, not dropped, when the dialog
// or the session ends.

#include <QFileInfo>
#include <QLineEdit>

#include "app/gui/main_dialog.h"
#include "platform/settings.h"

namespace tunebox::gui {
// REC's own precondition, checked before anything is asked: a press that
// would be ignored asks nothing.
bool MainDialog::recordingCanStart() {
    if (!playersIdle() || (controller_.captureActive() && monitorOn() != 1)) {
        return false;
    }
    if (recordedName_.isEmpty()) {
        services_.showStop(this, QStringLiteral("録音できません"),
                           QStringLiteral("録音ﾌｧｲﾙ名を指定してください。"));
        return false;
    }
    return true;
}

bool MainDialog::overwriteAgreed() {
    if (!QFileInfo(recordedName_).isFile() || recordedName_ == overwriteAgreed_) {
        return true;
    }
    return services_.askYesNo(
        this, QStringLiteral("録音ﾌｧｲﾙの上書き"),
        recordedName_ + QStringLiteral("\nは既にあります。上書きして録音しますか?"));
}

// The file of the last take is named again at start.
void MainDialog::restoreLastTake() {
    recordedNameEdit_->setText(QString::fromStdString(readLastTake()));
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
