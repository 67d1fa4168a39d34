#pragma once
// The program's own pages (help, and the maker's page behind About), shipped
// beside the executable under share/tunebox.

#include <QUrl>

namespace tunebox::gui {

QUrl helpPage();
QUrl makerPage();

}  // namespace tunebox::gui
