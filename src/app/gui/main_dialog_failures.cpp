// Failures the singer must act on, each said once in a message box that
// names what to do. Where the log alone used to hear of a failure, the box
// is said as well, so the singer knows what to do.

#include <QFileInfo>

#include "app/gui/help_viewer.h"
#include "app/gui/main_dialog.h"
#include "app/gui/project_pages.h"
#include "core/diagnostic_log.h"

namespace tunebox::gui {

// Also shown, so the singer knows what to do: a player that could not open
// its file or its device used to go only to the log.
void MainDialog::tellPlayFailure(PlayStart start, const QString& file, const WaveCtl& player) {
    if (start == PlayStart::kDeviceFailed) {
        const QString error = QString::fromStdString(player.lastDeviceError());
        logAlways("sound output: " + player.lastDeviceError());
        services_.showStop(this, tr("No sound output"),
                           tr("The sound output cannot be opened (%1).\nCheck that speakers or "
                              "headphones are connected and not taken by another program, then "
                              "try again.")
                               .arg(error));
    } else if (start == PlayStart::kOpenFailed) {
        services_.showStop(
            this, tr("Cannot play"),
            QFileInfo::exists(file)
                ? tr("%1 cannot be played: Tunebox cannot read it as sound.\nPick another file.")
                      .arg(file)
                : tr("%1 does not exist.\nRecord a take first, or pick the file again.").arg(file));
    }
}

// Also shown, so the singer knows what to do: a monitor that would not
// start used to go only to the log.
void MainDialog::tellMonitorFailure() {
    const std::string& error = controller_.capture().lastError();
    logAlways(error);
    services_.showStop(this, tr("No microphone"),
                       tr("The level monitor cannot start (%1).\nCheck that a microphone is "
                          "connected and not taken by another program, then try again.")
                           .arg(QString::fromStdString(error)));
}

void MainDialog::showHelp() {
    const std::optional<QUrl> page = findPage(QStringLiteral("help.html"), services_.pageFolders);
    if (!page) {
        tellHelpMissing();
    } else if (!services_.openUrl(*page)) {
        // No browser took it: the page is plain HTML, which Qt shows itself.
        showHelpViewer(*page, this);
    }
}

void MainDialog::tellHelpMissing() {
    services_.showStop(this, tr("Help"),
                       tr("The help page (help.html) is not installed. It was looked for in:\n%1\n"
                          "Install Tunebox again to restore it.")
                           .arg(services_.pageFolders.join('\n')));
}

}  // namespace tunebox::gui
