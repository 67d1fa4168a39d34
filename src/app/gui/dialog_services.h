#pragma once
// What the dialog asks of the desktop: file pickers, the message boxes, the
// default browser and the sound devices. The dialog takes them as a set
// so that a test can answer in place of a user.

#include <QString>
#include <QStringList>
#include <QUrl>
#include <functional>
#include <memory>

#include "platform/audio_backend.h"

class QWidget;

namespace tunebox::gui {

struct PickerRequest {
    // Pairs of description and patterns separated by '|', ending in "||".
    QString filter;
    QString defaultSuffix;
    QString initialFolder;
    bool multiSelect = false;
};

struct DialogServices {
    // The files chosen, or none when the user cancelled.
    std::function<QStringList(QWidget* parent, const PickerRequest& request)> pickOpen;
    // The file to save to, or empty when the user cancelled.
    std::function<QString(QWidget* parent, const PickerRequest& request)> pickSave;
    std::function<void(QWidget* parent, const QString& caption, const QString& text)> showStop;
    std::function<void(QWidget* parent, const QString& caption, const QString& text)> showNote;
    // True when the user answers yes; no is the safe answer and the default.
    std::function<bool(QWidget* parent, const QString& caption, const QString& text)> askYesNo;
    // False when no browser or viewer took the page.
    std::function<bool(const QUrl& url)> openUrl;
    // The players' and the recorder's devices and timers.
    std::shared_ptr<AudioBackend> audio;
    // Where the program's own pages (help) are looked for.
    QStringList pageFolders;
};

// Qt's own pickers, message box and QDesktopServices, and the backend the
// environment chooses.
DialogServices desktopServices();

// "desc|patterns|...||" as Qt name filters: "desc (patterns)".
QStringList qtNameFilters(const QString& filter);

}  // namespace tunebox::gui
