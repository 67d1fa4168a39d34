#include "app/gui/help_viewer.h"

#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace tunebox::gui {

void showHelpViewer(const QUrl& page, QWidget* parent) {
    auto* viewer = new QDialog(parent);
    viewer->setObjectName(QStringLiteral("helpViewer"));
    viewer->setAttribute(Qt::WA_DeleteOnClose);
    viewer->setWindowTitle(QCoreApplication::translate("HelpViewer", "Tunebox help"));
    auto* browser = new QTextBrowser(viewer);
    browser->setOpenExternalLinks(true);
    browser->setSource(page);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, viewer);
    QObject::connect(buttons, &QDialogButtonBox::rejected, viewer, &QDialog::close);
    auto* layout = new QVBoxLayout(viewer);
    layout->addWidget(browser);
    layout->addWidget(buttons);
    viewer->resize(560, 480);
    viewer->show();
}

}  // namespace tunebox::gui
