#include "app/gui/run_dialog.h"

#include <QApplication>
#include <QSessionManager>

#include "app/gui/language.h"
#include "app/gui/main_dialog.h"
#include "app/gui/termination_signals.h"
#include "platform/settings.h"

namespace tunebox::gui {

void endTakeWithTheSession(MainDialog& dialog, const TerminationSignals& terminations) {
    QObject::connect(qApp, &QGuiApplication::commitDataRequest, &dialog,
                     [&dialog](QSessionManager&) { dialog.finishTake(); });
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, &dialog, &MainDialog::finishTake);
    QObject::connect(&terminations, &TerminationSignals::arrived, &dialog, &MainDialog::reject);
}

int runMainDialog(int& argc, char** argv, const std::string& language) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tunebox"));
    QApplication::setDesktopFileName(QStringLiteral("tunebox"));
    const Translations translations(chooseLanguage(QString::fromStdString(language),
                                                   QString::fromStdString(readLanguageChoice()),
                                                   QLocale::system()));
    MainDialog dialog;
    const TerminationSignals terminations;
    endTakeWithTheSession(dialog, terminations);
    dialog.exec();
    return terminations.received() == 0 ? 0 : 128 + terminations.received();
}

}  // namespace tunebox::gui
