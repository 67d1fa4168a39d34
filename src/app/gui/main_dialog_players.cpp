// The two players: picking the files, PLAY, STOP and PAUSE, the timers and
// the position display.

#include <QLabel>
#include <QTreeWidget>
#include <algorithm>

#include "app/gui/image_button.h"
#include "app/gui/main_dialog.h"
#include "app/gui/position_time.h"
#include "core/ling_buffer.h"
#include "core/playback_clock.h"
#include "core/wave_format.h"
#include "platform/settings.h"
#include "playback/wav_length.h"

namespace tunebox::gui {
namespace {

constexpr uint32_t kBufferBytes = kEngineBlockBytes;
constexpr int32_t kBufferCount = 3;
constexpr uint8_t kSectorsPerRead = 13;
constexpr uint32_t kFileSource = 1;
constexpr int kTickMilliseconds = 500;

const QString kKaraokeFilter = QStringLiteral("*.wav;*.mp3|*.wav;*.mp3|All Files (*.*)|*.*||");
const QString kRecordedFilter = QStringLiteral("*.wav|*.wav|All Files (*.*)|*.*||");

void initialisePlayer(WaveCtl& player, const TrackEntry& entry) {
    player.wavInit(nullptr, entry.p0, entry.bands, entry.p3, entry.p1, entry.p2, entry.p4,
                   entry.range, kFileSource);
    player.wavSetRoomSize(entry.tenths);
    // The settings are read at every start, so a changed file takes effect.
    player.setSourceOptions(SourceOptions{readDecoderChoice() == 1});
}

}  // namespace

bool MainDialog::playersIdle() const {
    return karaoke_.state == kIdle && recorded_.state == kIdle;
}

void MainDialog::pickKaraoke() {
    if (!playersIdle() || captureActive()) {
        return;
    }
    const QStringList picked = services_.pickOpen(
        this, {kKaraokeFilter, QStringLiteral("WAV"),
               QString::fromStdString(readFolder(FolderPicker::kKaraoke)), true});
    if (picked.isEmpty() || picked.first().isEmpty()) {
        return;
    }
    const QString path = picked.first();
    TrackEntry entry;
    entry.path = path.toStdString();
    if (wavGetLength(entry.path, entry.length) == 0) {
        services_.showStop(this, QStringLiteral("ﾌｧｲﾙ選択の失敗"),
                           QStringLiteral("ｻﾎﾟｰﾄされないﾌｧｲﾙﾌｫｰﾏｯﾄ:") + path);
        return;
    }
    list_.remove(0);
    list_.append(entry);
    currentIndex_ = 0;
    listView_->clear();
    listView_->addTopLevelItem(new QTreeWidgetItem({QStringLiteral("1"), path}));
    karaoke_.length = entry.length;
    karaokeName_ = path;
    pushToControls();
    writeFolder(FolderPicker::kKaraoke, entry.path);
}

int MainDialog::playKaraoke() {
    if (currentIndex_ < 0 || currentIndex_ >= list_.count()) {
        return 0;
    }
    if (karaoke_.state == kPlaying) {
        karaoke_.restartMarker = 1;
        return 1;
    }
    if (karaoke_.state == kPaused) {
        karaoke_.restartMarker = 0;
        togglePause(karaoke_, karaokePlayer_, karaokePause_);
        return 1;
    }
    setFace(karaokePlay_, kFacePlaying);
    TrackEntry entry;
    list_.get(currentIndex_, entry);
    karaokePlayer_.wavSetGeometry(kBufferCount, kSectorsPerRead);
    allocateMixBuf(karaokePlayer_.mixBuf(), kBufferBytes, kBufferCount);
    initialisePlayer(karaokePlayer_, entry);
    karaoke_.length = entry.length;
    if (karaokePlayer_.wavOpenFile(entry.path, karaoke_.position, karaoke_.length) == 0) {
        // The PLAY face stays lit: that is how a failed start has always looked.
        return 0;
    }
    karaoke_.state = kPlaying;
    karaokeRunStart_ = adjustStartPosition(karaoke_.position);
    karaokeTimer_.start(kTickMilliseconds);
    karaokePlayer_.wavPlay();
    return 1;
}

void MainDialog::togglePause(PlayerStatus& status, WaveCtl& player, ImageButton* pauseButton) {
    if (status.state == kPaused) {
        status.state = kPlaying;
        player.wavPause(0);
        setFace(pauseButton, kFacePause);
    } else if (status.state == kPlaying) {
        status.state = kPaused;
        player.wavPause(1);
        setFace(pauseButton, kFacePaused);
        if (&status == &karaoke_) {
            refreshKaraokeDisplay();
        } else {
            refreshRecordedTrackbar();
        }
    }
}

void MainDialog::stopKaraoke(bool reset) {
    karaokePlayer_.wavStop();
    karaoke_.state = kIdle;
    karaoke_.restartMarker = 0;
    karaokeTimer_.stop();
    setFace(karaokePlay_, kFacePlay);
    setFace(karaokePause_, kFacePause);
    if (reset) {
        karaoke_.position = 0;
        refreshKaraokeDisplay();
    }
}

void MainDialog::pauseKaraoke() {
    // Pausing and then stopping leaves a player that remembers where it
    // stopped: the next PLAY opens the file afresh from there.
    togglePause(karaoke_, karaokePlayer_, karaokePause_);
    stopKaraoke(false);
}

void MainDialog::pickRecorded() {
    if (!playersIdle() || captureActive()) {
        return;
    }
    const QString picked =
        services_.pickSave(this, {kRecordedFilter, QStringLiteral("wav"),
                                  QString::fromStdString(readFolder(FolderPicker::kMic)), false});
    if (picked.isEmpty()) {
        return;
    }
    recordedName_ = picked;
    pushToControls();
    recordedNameChanged();
    writeFolder(FolderPicker::kMic, picked.toStdString());
}

void MainDialog::playRecorded() {
    if (recordedName_.isEmpty() || captureActive()) {
        return;
    }
    if (recorded_.state == kPlaying) {
        karaoke_.restartMarker = 1;
        return;
    }
    if (recorded_.state == kPaused) {
        togglePause(recorded_, recordedPlayer_, recordedPause_);
        return;
    }
    setFace(recordedPlay_, kFacePlaying);
    const TrackEntry preset;
    initialisePlayer(recordedPlayer_, preset);
    const std::string path = recordedName_.toStdString();
    wavGetLength(path, recorded_.length);
    if (recordedPlayer_.wavOpenFile(path, recorded_.position, recorded_.length) == 0) {
        stopRecordedPlayer();
        return;
    }
    recorded_.state = kPlaying;
    recordedTimer_.start(kTickMilliseconds);
    recordedPlayer_.wavPlay();
}

void MainDialog::stopRecordedPlayer() {
    recordedPlayer_.wavStop();
    recorded_.state = kIdle;
    recorded_.restartMarker = 0;
    recordedTimer_.stop();
    setFace(recordedPlay_, kFacePlay);
    setFace(recordedPause_, kFacePause);
}

void MainDialog::stopRecorder() {
    if (recorded_.state != kIdle) {
        stopRecordedPlayer();
        recorded_.position = 0;
        refreshRecordedTrackbar();
    }
    if (karaoke_.state != kIdle) {
        stopKaraoke(true);
    }
    if (captureActive()) {
        recorderStop_->setEnabled(false);
        recordedPlay_->setEnabled(false);
        capture_.stop();
        setFace(recordButton_, kFaceRecord);
        setFace(monitorButton_, kFaceMonitor);
        monitorFlag_ = 0;
        recorderStop_->setEnabled(true);
        recordedPlay_->setEnabled(true);
        drawLevels(0, 0);
    }
}

void MainDialog::pauseRecorded() {
    togglePause(recorded_, recordedPlayer_, recordedPause_);
}

void MainDialog::karaokeTick() {
    if (karaokePlayer_.wavIsStopped()) {
        karaoke_.state = kIdle;
        karaokeTimer_.stop();
        setFace(karaokePlay_, kFacePlay);
        setFace(karaokePause_, kFacePause);
        karaoke_.position = 0;
        stopRecorder();
        refreshKaraokeDisplay();
    }
    if (karaoke_.dragged == 0 && karaoke_.state != kPaused) {
        refreshKaraokeDisplay();
    }
}

void MainDialog::recordedTick() {
    if (recordedPlayer_.wavIsStopped()) {
        recorded_.state = kIdle;
        recordedTimer_.stop();
        setFace(recordedPlay_, kFacePlay);
        setFace(recordedPause_, kFacePause);
        recorded_.position = 0;
        refreshRecordedTrackbar();
    }
    if (recorded_.dragged == 0 && recorded_.state != kPaused) {
        refreshRecordedTrackbar();
    }
}

void MainDialog::trackbarScrolled(PlayerStatus& status, TrackbarScroll kind, int value) {
    status.dragged = kind == TrackbarScroll::kThumbTrack ? 1 : 0;
    const int clamped = std::clamp(value, 0, kTrackbarMax);
    status.position = trackbarToBytes(clamped, status.length);
    if (&status == &karaoke_) {
        timeText_ = QString::fromStdString(formatPositionTime(karaoke_.position));
        timeLabel_->setText(timeText_);
    }
}

void MainDialog::refreshKaraokeDisplay() {
    if (karaoke_.state == kIdle) {
        karaokeTrackbar_->setValue(0);
    } else {
        // Where the singer is: the start of this run plus what the device
        // has played. The player's own clock rounds to whole seconds and so
        // reads up to a second ahead, which PAUSE would keep and PLAY skip.
        if (karaokePlayer_.state() != kPlayerStopped) {
            karaoke_.position = karaokeRunStart_ + karaokePlayer_.wavGetDevicePosition();
        }
        if (karaoke_.dragged == 0) {
            karaokeTrackbar_->setValue(static_cast<int>(karaokePlayer_.wavGetSliderPos()));
        }
    }
    delayReadout_ = QString::number(takeDelay());
    delayLabel_->setText(delayReadout_);
    timeText_ = QString::fromStdString(formatPositionTime(karaoke_.position));
    timeLabel_->setText(timeText_);
}

// The mixer measures the delay afresh at every block, also while a take winds
// down after the accompaniment's device has closed, when the figure is the
// capture position alone. The read-out follows the mixer only while both
// devices run, and keeps the delay the take was lined up with after it.
int32_t MainDialog::takeDelay() {
    const SyncMx& mixer = capture_.syncMx();
    if (captureActive() && karaoke_.state == kPlaying) {
        takeDelay_ = mixer.aligned() ? mixer.alignedDelay() : mixer.currentDelay();
    }
    return takeDelay_;
}

void MainDialog::refreshRecordedTrackbar() {
    if (recorded_.state == kIdle) {
        recordedTrackbar_->setValue(0);
    } else if (recorded_.dragged == 0) {
        recordedTrackbar_->setValue(static_cast<int>(recordedPlayer_.wavGetSliderPos()));
    }
}

}  // namespace tunebox::gui
