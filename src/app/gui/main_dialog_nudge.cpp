// The sync nudge beside the audition player: PLAY hears the take with its
// voice moved by the nudge, and Save nudge writes that into the take. Both mix
// the take again from its voice file, which stays as it was recorded, so
// the nudge always counts from the take as sung.

#include <QSpinBox>

#include "app/gui/main_dialog.h"
#include "core/diagnostic_log.h"
#include "platform/settings.h"
#include "session/take_remix.h"

namespace tunebox::gui {
// The audition player's own precondition, and nothing else may be using the
// take while it is mixed again.
bool MainDialog::nudgeCanRun() const {
    return !recordedName_.isEmpty() && !controller_.captureActive() &&
           controller_.recorded().state == kIdle;
}

bool MainDialog::remixTo(const QString& output) {
    const std::string problem = remixTake({.take = recordedName_.toStdString(),
                                           .output = output.toStdString(),
                                           .nudge = nudgeFrames(nudgeSpin_->value())});
    if (problem.empty()) {
        return true;
    }
    logAlways(problem);
    services_.showStop(this, tr("Sync nudge"),
                       tr("The nudge cannot be applied:\n") + QString::fromStdString(problem));
    return false;
}

// Without a nudge, or resuming a pause, the take is played as it stands.
void MainDialog::playRecorded() {
    std::string audition;
    if (nudgeCanRun() && nudgeSpin_->value() != 0) {
        if (!remixTo(auditionFile_)) {
            return;
        }
        audition = auditionFile_.toStdString();
    }
    if (controller_.recorded().state == kIdle) {
        controller_.setAuditionFile(audition);
    }
    tellPlayFailure(controller_.playRecorded(),
                    audition.empty() ? recordedName_ : QString::fromStdString(audition),
                    controller_.recordedPlayer());
}

void MainDialog::saveNudge() {
    if (!nudgeCanRun()) {
        return;
    }
    if (remixTo(recordedName_)) {
        services_.showNote(this, tr("Sync nudge"),
                           tr("Saved into the recording file: ") + recordedName_);
    }
}

}  // namespace tunebox::gui
