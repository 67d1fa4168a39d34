#include "app/gui/run_dialog.h"

#include <QApplication>

#include "app/gui/main_dialog.h"

namespace tunebox::gui {

int runMainDialog(int& argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tunebox"));
    QApplication::setDesktopFileName(QStringLiteral("tunebox"));
    MainDialog dialog;
    dialog.exec();
    return 0;
}

}  // namespace tunebox::gui
