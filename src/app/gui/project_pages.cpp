#include "app/gui/project_pages.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace tunebox::gui {
namespace {

// Installed as <prefix>/bin/tunebox with <prefix>/share/tunebox; the build
// tree mirrors that with the pages in <build>/share/tunebox.
QUrl page(const QString& name) {
    const QDir executable(QCoreApplication::applicationDirPath());
    for (const QString& share :
         {QStringLiteral("../share/tunebox"), QStringLiteral("../../share/tunebox")}) {
        const QFileInfo file(executable.filePath(share + '/' + name));
        if (file.exists()) {
            return QUrl::fromLocalFile(file.canonicalFilePath());
        }
    }
    return QUrl::fromLocalFile(executable.filePath(QStringLiteral("../share/tunebox/") + name));
}

}  // namespace

QUrl helpPage() {
    return page(QStringLiteral("help.html"));
}

QUrl makerPage() {
    return page(QStringLiteral("about.html"));
}

}  // namespace tunebox::gui
