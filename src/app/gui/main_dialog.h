#pragma once
// The main dialog: the whole user interface and the controller of a
// recording session. It owns the accompaniment player (which hands copies of
// what it plays to the recorder), the player that auditions the recorded
// file, and the capture engine, and decides when each starts and stops.

#include <QDialog>
#include <QTimer>
#include <cstdint>

#include "app/gui/dialog_services.h"
#include "app/gui/position_trackbar.h"
#include "app/gui/qt_dispatcher.h"
#include "app/gui/track_list.h"
#include "capture/rec_wav.h"
#include "playback/mixing_wave_ctl.h"
#include "playback/wave_ctl.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QTreeWidget;

namespace tunebox::gui {

class ImageButton;
class LevelMeter;

enum PlayerMode : int { kIdle = 0, kPlaying = 1, kPaused = 2 };

// What the dialog keeps about one player.
struct PlayerStatus {
    int state = kIdle;
    uint32_t position = 0;  // where the next open starts, in bytes
    uint32_t length = 0;
    int dragged = 0;        // the thumb is held
    int restartMarker = 0;  // set by PLAY while playing; nothing reads it
};

class MainDialog : public QDialog {
    Q_OBJECT

  public:
    explicit MainDialog(DialogServices services = desktopServices(), QWidget* parent = nullptr);
    ~MainDialog() override;

    const PlayerStatus& karaokeStatus() const { return karaoke_; }
    const PlayerStatus& recordedStatus() const { return recorded_; }
    int monitorOn() const { return monitorFlag_; }
    int currentIndex() const { return currentIndex_; }
    LevelMeter& meter() const { return *meter_; }
    WaveCtl& karaokePlayer() { return karaokePlayer_; }
    WaveCtl& recordedPlayer() { return recordedPlayer_; }
    CRecWav& capture() { return capture_; }

    // The capture engine's level callback lands here.
    void drawLevels(int first, int second);
    // And its fault notice.
    void captureFaulted(CaptureFault fault);

  protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    // Building the dialog.
    void createControls();
    void layOutControls();
    void setUpImageButtons();
    void setUpWindowMenu();
    ImageButton* makeButton(int id, const QString& caption, const QString& tip);
    void initialiseMembers();

    // Members to controls and back.
    void pushToControls();
    void readFromControls();
    void setFace(ImageButton* button, int face);

    // Commands.
    void pickKaraoke();
    int playKaraoke();
    void stopKaraoke(bool reset);
    void pauseKaraoke();
    void pickRecorded();
    void recordedNameChanged();
    void record();
    void playRecorded();
    void stopRecorder();
    void pauseRecorded();
    void toggleMonitor();
    void echoChanged();
    void manualDelayLeft();
    void showAbout();
    void showHelp();

    // Shared steps.
    void togglePause(PlayerStatus& status, WaveCtl& player, ImageButton* pauseButton);
    void stopRecordedPlayer();
    void karaokeTick();
    void recordedTick();
    void trackbarScrolled(PlayerStatus& status, TrackbarScroll kind, int value);
    void refreshKaraokeDisplay();
    int32_t takeDelay();
    void refreshRecordedTrackbar();
    bool playersIdle() const;

    // Capture.
    int captureActive() const { return capture_.isActive(); }
    void stopMonitor();
    void startSyncOffsets();
    void connectCapture();
    void endFaultedTake(CaptureFault fault);
    void destroy();

    DialogServices services_;
    MixingWaveCtl karaokePlayer_{*services_.audio};
    WaveCtl recordedPlayer_{*services_.audio};
    PlayerStatus karaoke_;
    PlayerStatus recorded_;
    // Declared after the players it reads from, so it is gone before them.
    QtDispatcher dispatcher_;
    CRecWav capture_{dispatcher_, *services_.audio};
    TrackList list_;
    int currentIndex_ = -1;
    // Where the accompaniment's current run started, in bytes.
    uint32_t karaokeRunStart_ = 0;
    // The delay the mixer lined the take up with, for the read-out.
    int32_t takeDelay_ = 0;
    int monitorFlag_ = 0;

    // Members exchanged with controls.
    QString karaokeName_;
    QString recordedName_;
    QString timeText_;
    QString delayReadout_;
    QString manualDelayText_;
    QString captureStartText_;
    QString playbackStartText_;
    int echoFlag_ = 1;
    int manualDelayFlag_ = 0;

    QTimer karaokeTimer_;   // 101
    QTimer recordedTimer_;  // 102

    ImageButton* karaokePick_ = nullptr;
    ImageButton* karaokePlay_ = nullptr;
    ImageButton* karaokeStop_ = nullptr;
    ImageButton* karaokePause_ = nullptr;
    ImageButton* leftButton_ = nullptr;
    ImageButton* rightButton_ = nullptr;
    ImageButton* recordedPick_ = nullptr;
    ImageButton* recordedPlay_ = nullptr;
    ImageButton* recorderStop_ = nullptr;
    ImageButton* recordedPause_ = nullptr;
    ImageButton* recordButton_ = nullptr;
    ImageButton* monitorButton_ = nullptr;
    ImageButton* aboutButton_ = nullptr;
    ImageButton* helpButton_ = nullptr;
    QTreeWidget* listView_ = nullptr;
    QLineEdit* karaokeNameEdit_ = nullptr;
    QLineEdit* recordedNameEdit_ = nullptr;
    PositionTrackbar* karaokeTrackbar_ = nullptr;
    PositionTrackbar* recordedTrackbar_ = nullptr;
    QLabel* timeLabel_ = nullptr;
    QCheckBox* echoCheck_ = nullptr;
    QCheckBox* manualDelayCheck_ = nullptr;
    QLineEdit* manualDelayEdit_ = nullptr;
    QLabel* delayLabel_ = nullptr;
    QLabel* captureStartLabel_ = nullptr;
    QLabel* playbackStartLabel_ = nullptr;
    LevelMeter* meter_ = nullptr;
};

}  // namespace tunebox::gui
