// The keyboard: Space plays and pauses the accompaniment, R records and S
// stops, each as a press of its button would. A take is never ended by a
// stray key: Escape does nothing while one runs, and closing the window
// then asks first.

#include <QCloseEvent>
#include <QKeyEvent>
#include <QShortcut>

#include "app/gui/image_button.h"
#include "app/gui/main_dialog.h"

namespace tunebox::gui {

// Text boxes claim the letters and the space typed into them before a
// shortcut sees them, so a file name can still hold an R, an S or a space.
void MainDialog::setUpShortcuts() {
    const auto onKey = [this](Qt::Key key, auto pressed) {
        connect(new QShortcut(QKeySequence(key), this), &QShortcut::activated, this, pressed);
    };
    onKey(Qt::Key_Space,
          [this] { (karaokeStatus().state == kPlaying ? karaokePause_ : karaokePlay_)->click(); });
    onKey(Qt::Key_R, [this] { recordButton_->click(); });
    onKey(Qt::Key_S, [this] { recorderStop_->click(); });
}

bool MainDialog::takeRunning() const {
    return controller_.captureActive() && monitorOn() == 0;
}

void MainDialog::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && takeRunning()) {
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

void MainDialog::closeEvent(QCloseEvent* event) {
    if (takeRunning() &&
        !services_.askYesNo(this, tr("Close Tunebox"),
                            tr("A take is being recorded. Stop it, keep what was sung "
                               "and close?"))) {
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

}  // namespace tunebox::gui
