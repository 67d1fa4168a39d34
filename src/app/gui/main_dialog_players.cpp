// The two players: picking the files, the accompaniment's PLAY and the
// position trackbars.

#include <QFileInfo>
#include <QLabel>
#include <QTreeWidget>

#include "app/gui/main_dialog.h"
#include "platform/settings.h"
#include "playback/wav_length.h"
#include "session/position_time.h"

namespace tunebox::gui {
namespace {

const QString kKaraokePatterns = QStringLiteral(
    "*.wav;*.mp3;*.mp2;*.mpa;*.mp1;*.flac;*.ogg;*.oga;*.opus;"
    "*.aif;*.aiff;*.aifc;*.caf;*.w64;*.rf64;*.txt");
const QString kKaraokeFilter = kKaraokePatterns + QStringLiteral("|") + kKaraokePatterns +
                               QStringLiteral("|All Files (*.*)|*.*||");
const QString kRecordedFilter = QStringLiteral("*.wav|*.wav|All Files (*.*)|*.*||");

}  // namespace

bool MainDialog::playersIdle() const {
    return controller_.accompaniment().state == kIdle && controller_.recorded().state == kIdle;
}

void MainDialog::pickKaraoke() {
    if (!playersIdle() || controller_.captureActive()) {
        return;
    }
    const QStringList picked = services_.pickOpen(
        this, {kKaraokeFilter, QStringLiteral("WAV"),
               QString::fromStdString(readFolder(FolderPicker::kKaraoke)), true});
    if (picked.isEmpty() || picked.first().isEmpty()) {
        return;
    }
    const QString path = audioOfPick(picked.first());
    TrackEntry entry;
    entry.path = path.toStdString();
    if (wavGetLength(entry.path, entry.length) == 0) {
        services_.showStop(this, tr("File selection failed"),
                           tr("Unsupported file format: ") + picked.first());
        return;
    }
    list_.remove(0);
    list_.append(entry);
    currentIndex_ = 0;
    listView_->clear();
    listView_->addTopLevelItem(new QTreeWidgetItem({QStringLiteral("1"), path}));
    controller_.setAccompanimentLength(entry.length);
    recallKeyTempoFor(entry.path);
    karaokeName_ = path;
    pushToControls();
    writeFolder(FolderPicker::kKaraoke, entry.path);
    lookForLyrics(picked.first(), path);
}

std::optional<TrackEntry> MainDialog::currentTrack() const {
    TrackEntry entry;
    if (list_.get(currentIndex_, entry) == 0) {
        return std::nullopt;
    }
    moveKeyTempo(entry);
    return entry;
}

void MainDialog::playKaraoke() {
    tellPlayFailure(controller_.playAccompaniment(currentTrack()), karaokeName_,
                    controller_.accompanimentPlayer());
}

void MainDialog::pickRecorded() {
    if (!playersIdle() || controller_.captureActive()) {
        return;
    }
    const QString picked =
        services_.pickSave(this, {kRecordedFilter, QStringLiteral("wav"),
                                  QString::fromStdString(readFolder(FolderPicker::kMic)), false});
    if (picked.isEmpty()) {
        return;
    }
    recordedName_ = picked;
    // The picker has asked before it let an existing file be chosen.
    overwriteAgreed_ = QFileInfo(picked).isFile() ? picked : QString();
    pushToControls();
    recordedNameChanged();
    writeFolder(FolderPicker::kMic, picked.toStdString());
    offerRepair(picked);
}

void MainDialog::recordedNameChanged() {
    readFromControls();
    controller_.setOutputFile(recordedName_.toStdString());
}

void MainDialog::trackbarScrolled(TakePlayer player, TrackbarScroll kind, int value) {
    controller_.moveTrackbar(player, kind == TrackbarScroll::kThumbTrack, value);
    if (player == TakePlayer::kAccompaniment) {
        showTime(controller_.accompaniment().position);
    }
}

void MainDialog::showTime(uint32_t position) {
    timeText_ = QString::fromStdString(formatPositionTime(position));
    timeLabel_->setText(timeText_);
}

}  // namespace tunebox::gui
