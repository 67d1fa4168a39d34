#include "app/gui/dialog_services.h"

#include <QDesktopServices>
#include <QFileDialog>
#include <QMessageBox>

#include "app/gui/project_pages.h"

namespace tunebox::gui {
namespace {

void prepare(QFileDialog& picker, const PickerRequest& request) {
    picker.setNameFilters(qtNameFilters(request.filter));
    picker.setDefaultSuffix(request.defaultSuffix);
    picker.setDirectory(request.initialFolder);
    picker.setOption(QFileDialog::ReadOnly, false);
}

QStringList pickOpen(QWidget* parent, const PickerRequest& request) {
    QFileDialog picker(parent);
    prepare(picker, request);
    picker.setAcceptMode(QFileDialog::AcceptOpen);
    picker.setFileMode(request.multiSelect ? QFileDialog::ExistingFiles
                                           : QFileDialog::ExistingFile);
    return picker.exec() == QDialog::Accepted ? picker.selectedFiles() : QStringList();
}

QString pickSave(QWidget* parent, const PickerRequest& request) {
    QFileDialog picker(parent);
    prepare(picker, request);
    picker.setAcceptMode(QFileDialog::AcceptSave);
    picker.setFileMode(QFileDialog::AnyFile);
    if (picker.exec() != QDialog::Accepted || picker.selectedFiles().isEmpty()) {
        return {};
    }
    return picker.selectedFiles().first();
}

void showStop(QWidget* parent, const QString& caption, const QString& text) {
    QMessageBox box(QMessageBox::Critical, caption, text, QMessageBox::Ok, parent);
    box.exec();
}

void showNote(QWidget* parent, const QString& caption, const QString& text) {
    QMessageBox box(QMessageBox::Information, caption, text, QMessageBox::Ok, parent);
    box.exec();
}

bool askYesNo(QWidget* parent, const QString& caption, const QString& text) {
    QMessageBox box(QMessageBox::Question, caption, text, QMessageBox::Yes | QMessageBox::No,
                    parent);
    box.setDefaultButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

}  // namespace

QStringList qtNameFilters(const QString& filter) {
    const QStringList parts = filter.split('|', Qt::SkipEmptyParts);
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QString patterns = parts[i + 1];
        patterns.replace(';', ' ');
        // "*.*" means every file, with or without an extension.
        patterns.replace(QStringLiteral("*.*"), QStringLiteral("*"));
        filters << QStringLiteral("%1 (%2)").arg(parts[i], patterns);
    }
    return filters;
}

DialogServices desktopServices() {
    return {pickOpen,
            pickSave,
            showStop,
            showNote,
            askYesNo,
            [](const QUrl& url) { return QDesktopServices::openUrl(url); },
            makeAudioBackendFromEnvironment(),
            pageFolders()};
}

}  // namespace tunebox::gui
