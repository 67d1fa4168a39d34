#include "app/gui/project_pages.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace tunebox::gui {

QStringList pageFolders() {
    const QDir executable(QCoreApplication::applicationDirPath());
    QStringList folders;
    for (const QString& share :
         {QStringLiteral("../share/tunebox"), QStringLiteral("../../share/tunebox")}) {
        folders << QDir::cleanPath(executable.filePath(share));
    }
    for (const QString& data :
         QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation)) {
        folders << QDir(data).filePath(QStringLiteral("tunebox"));
    }
    return folders;
}

std::optional<QUrl> findPage(const QString& name, const QStringList& folders) {
    for (const QString& folder : folders) {
        const QFileInfo file(QDir(folder).filePath(name));
        if (file.isFile()) {
            return QUrl::fromLocalFile(file.canonicalFilePath());
        }
    }
    return std::nullopt;
}

QUrl makerPage() {
    const QString name = QStringLiteral("about.html");
    const QStringList folders = pageFolders();
    return findPage(name, folders)
        .value_or(QUrl::fromLocalFile(QDir(folders.first()).filePath(name)));
}

}  // namespace tunebox::gui
