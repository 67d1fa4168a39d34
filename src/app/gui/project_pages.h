#pragma once
// The program's own pages (help, and the maker's page behind About), shipped
// under share/tunebox: beside the executable as installed, and copied into
// the build tree so that a build finds them too.

#include <QStringList>
#include <QUrl>
#include <optional>

namespace tunebox::gui {

// Where the pages are looked for, in order: <prefix>/share/tunebox of the
// executable's <prefix>/bin (also the build tree's copy), then the system's
// data folders.
QStringList pageFolders();

// The page `name` from the first of `folders` that holds it.
std::optional<QUrl> findPage(const QString& name, const QStringList& folders);

QUrl makerPage();

}  // namespace tunebox::gui
