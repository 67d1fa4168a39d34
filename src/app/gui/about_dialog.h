#pragma once
// The About box: name, version and a link to the maker's page, which opens
// in the default browser.

#include <QDialog>
#include <QUrl>
#include <functional>

namespace tunebox::gui {

class AboutDialog : public QDialog {
    Q_OBJECT

  public:
    AboutDialog(std::function<void(const QUrl&)> openUrl, QWidget* parent = nullptr);
};

}  // namespace tunebox::gui
