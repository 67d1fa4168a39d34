#include "app/gui/about_dialog.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "app/gui/app_icon.h"
#include "app/gui/project_pages.h"

namespace tunebox::gui {

AboutDialog::AboutDialog(std::function<void(const QUrl&)> openUrl, QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(tr("About Tunebox"));
    auto* icon = new QLabel(this);
    icon->setPixmap(appIcon().pixmap(64, 64));
    auto* text =
        new QLabel(QStringLiteral("<b>Tunebox</b> Version " TUNEBOX_VERSION "<br>%1<br>"
                                  "<a href=\"%2\">%3</a>")
                       .arg(tr("Karaoke recorder"), makerPage().toString(), tr("Tunebox's page")),
                   this);
    text->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    connect(text, &QLabel::linkActivated, this,
            [openUrl](const QString& link) { openUrl(QUrl(link)); });
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* row = new QHBoxLayout;
    row->addWidget(icon);
    row->addWidget(text, 1);
    auto* page = new QVBoxLayout(this);
    page->addLayout(row);
    page->addWidget(buttons);
}

}  // namespace tunebox::gui
