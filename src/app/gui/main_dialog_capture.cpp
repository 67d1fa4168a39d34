// The capture side: REC, the level monitor, echo and the manual delay.

#include <QLineEdit>

#include "app/gui/about_dialog.h"
#include "app/gui/image_button.h"
#include "app/gui/level_meter.h"
#include "app/gui/main_dialog.h"
#include "app/gui/project_pages.h"

namespace tunebox::gui {

int MainDialog::captureActive() const {
    return 0;
}

long MainDialog::currentDelay() const {
    return 0;
}

void MainDialog::stopCapture() {}

void MainDialog::setCaptureEffects() {}

void MainDialog::record() {}

void MainDialog::toggleMonitor() {}

void MainDialog::echoChanged() {
    readFromControls();
    setCaptureEffects();
}

void MainDialog::recordedNameChanged() {
    readFromControls();
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
