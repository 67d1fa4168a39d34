#pragma once
// Answers the dialog's pickers and message boxes in place of a user and
// keeps what the dialog asked; plays through the backend the environment
// chooses unless a test sets its own.

#include <QStringList>
#include <vector>

#include "app/gui/dialog_services.h"
#include "app/gui/project_pages.h"

namespace tunebox::test {

struct FakeDesktop {
    QStringList openAnswer;
    QString saveAnswer;
    std::vector<gui::PickerRequest> requests;
    QStringList messages;  // "caption|text", notes and stops alike
    bool yesAnswer = false;
    QStringList questions;  // "caption|text"
    std::vector<QUrl> opened;
    bool browserOpens = true;
    QStringList pageFolders = gui::pageFolders();
    std::shared_ptr<AudioBackend> audio = makeAudioBackendFromEnvironment();

    gui::DialogServices services() {
        return {[this](QWidget*, const gui::PickerRequest& request) {
                    requests.push_back(request);
                    return openAnswer;
                },
                [this](QWidget*, const gui::PickerRequest& request) {
                    requests.push_back(request);
                    return saveAnswer;
                },
                [this](QWidget*, const QString& caption, const QString& text) {
                    messages << caption + '|' + text;
                },
                [this](QWidget*, const QString& caption, const QString& text) {
                    messages << caption + '|' + text;
                },
                [this](QWidget*, const QString& caption, const QString& text) {
                    questions << caption + '|' + text;
                    return yesAnswer;
                },
                [this](const QUrl& url) {
                    opened.push_back(url);
                    return browserOpens;
                },
                audio,
                pageFolders};
    }
};

}  // namespace tunebox::test
