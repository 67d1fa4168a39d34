#pragma once
// The help page shown in a window of the program's own, for a desktop where
// no browser opens it. It does not block: the singer can read it while
// using the dialog.

#include <QUrl>

class QWidget;

namespace tunebox::gui {

void showHelpViewer(const QUrl& page, QWidget* parent);

}  // namespace tunebox::gui
