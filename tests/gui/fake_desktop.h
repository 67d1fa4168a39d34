#pragma once
// Answers the dialog's pickers and message boxes in place of a user and
// keeps what the dialog asked.

#include <QStringList>
#include <vector>

#include "app/gui/dialog_services.h"

namespace tunebox::test {

struct FakeDesktop {
    QStringList openAnswer;
    QString saveAnswer;
    std::vector<gui::PickerRequest> requests;
    QStringList messages;  // "caption|text"
    std::vector<QUrl> opened;

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
                [this](const QUrl& url) { opened.push_back(url); }};
    }
};

}  // namespace tunebox::test
