#pragma once
// The main dialog: the whole user interface of a recording session. The take
// controller it owns runs the players and the capture engine; the dialog
// keeps the widgets, the button faces, the pickers and the message boxes.

#include <QDialog>
#include <QTimer>
#include <cstdint>
#include <optional>

#include "app/gui/dialog_services.h"
#include "app/gui/position_trackbar.h"
#include "app/gui/qt_dispatcher.h"
#include "session/take_controller.h"
#include "session/track_list.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QTreeWidget;

namespace tunebox::gui {

class ClipLight;
class ImageButton;
class KeyTempoControls;
class LevelMeter;
class LyricsDock;
struct SongLyrics;

class MainDialog : public QDialog, private TakeListener {
    Q_OBJECT

  public:
    explicit MainDialog(DialogServices services = desktopServices(), QWidget* parent = nullptr);
    ~MainDialog() override;

    const PlayerStatus& karaokeStatus() const { return controller_.accompaniment(); }
    const PlayerStatus& recordedStatus() const { return controller_.recorded(); }
    int monitorOn() const { return controller_.monitorOn(); }
    int currentIndex() const { return currentIndex_; }
    LevelMeter& meter() const { return *meter_; }
    ClipLight& clipLight() const { return *clipLight_; }
    TakeController& controller() { return controller_; }
    LyricsDock& lyricsDock() const { return *lyricsDock_; }

    // Ends a running take as STOP does; the desktop session is ending.
    void finishTake();
    // Closing the dialog in any way keeps the take recorded so far.
    void done(int result) override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    // Building the dialog.
    void createControls();
    void layOutControls();
    void setUpImageButtons();
    void setUpWindowMenu();
    void setUpShortcuts();
    ImageButton* makeButton(int id, const QString& caption, const QString& tip);
    void initialiseMembers();

    // Members to controls and back.
    void pushToControls();
    void readFromControls();
    void setFace(ImageButton* button, int face);

    // Commands.
    void pickKaraoke();
    void playKaraoke();
    void pickRecorded();
    void recordedNameChanged();
    void record();
    bool recordingCanStart() const;
    bool overwriteAgreed();
    QStringList filesToReplace() const;
    void playRecorded();
    void saveNudge();
    bool nudgeCanRun() const;
    bool remixTo(const QString& output);
    void restoreLastTake();
    void offerRepair(const QString& path);
    void toggleMonitor();
    void echoChanged();
    void manualDelayLeft();
    void showAbout();
    void showHelp();
    void trackbarScrolled(TakePlayer player, TrackbarScroll kind, int value);
    void createKeyTempoControls();
    void keyTempoMoved();
    void recallKeyTempoFor(const std::string& path);
    void moveKeyTempo(TrackEntry& entry) const;
    std::optional<TrackEntry> currentTrack() const;
    bool playersIdle() const;
    bool takeRunning() const;
    void endFaultedTake(CaptureFault fault);
    void destroy();

    // Failures the singer acts on, one message box each.
    void tellPlayFailure(PlayStart start, const QString& file, const WaveCtl& player);
    void tellMonitorFailure();
    void tellHelpMissing();
    QString clippedText(uint32_t clippedBlocks) const;
    QString delayText(int32_t bytes) const;
    void showCalibration(const std::optional<DeviceCalibration>& calibration);

    // What the take controller shows.
    void showFace(TakeButton button, bool lit) override;
    void showLevels(int32_t first, int32_t second) override;
    void captureFaulted(CaptureFault fault) override;
    void tickerChanged(TakePlayer player, bool running) override;
    void showAccompaniment(const AccompanimentReadout& readout) override;
    void showRecordedTrackbar(int value) override;
    void showStartPositions(uint32_t playback, uint32_t capture) override;
    void recorderStopping(bool stopping) override;
    void showRecordedPosition(uint32_t bytes) override;
    void blockClipped(uint32_t clippedBlocks) override;
    void takeEnded(uint32_t clippedBlocks) override;
    void takeOutOfSync(uint64_t fromBytes) override;
    void showTime(uint32_t position);

    // The lyrics pane.
    void setUpLyrics();
    QString audioOfPick(const QString& picked) const;
    void lookForLyrics(const QString& picked, const QString& audio);
    void pickLyrics();
    void showLyricsFile(const QString& path);
    void showLyrics(std::optional<SongLyrics> lyrics);
    void followLyrics();

    DialogServices services_;
    // Before the controller, whose capture engine posts to it until it goes.
    QtDispatcher dispatcher_;
    TakeController controller_{*services_.audio, dispatcher_, *this};
    TrackList list_;
    int currentIndex_ = -1;

    // Members exchanged with controls.
    QString karaokeName_;
    QString recordedName_;
    // A name the save picker has already asked to replace; REC does not ask
    // again for it until it has recorded over it.
    QString overwriteAgreed_;
    QString timeText_;
    QString delayReadout_;
    QString manualDelayText_;
    QString captureStartText_;
    QString playbackStartText_;
    int echoFlag_ = 1;
    int manualDelayFlag_ = 0;
    int voiceFileFlag_ = 1;
    // Where a nudged take is mixed for PLAY to audition it.
    QString auditionFile_;

    QTimer karaokeTimer_;   // 101
    QTimer recordedTimer_;  // 102
    QTimer lyricsTimer_;

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
    QCheckBox* voiceFileCheck_ = nullptr;
    QSpinBox* nudgeSpin_ = nullptr;
    ImageButton* nudgeSave_ = nullptr;
    QLineEdit* manualDelayEdit_ = nullptr;
    QLabel* delayLabel_ = nullptr;
    QLabel* calibrationLabel_ = nullptr;
    QLabel* captureStartLabel_ = nullptr;
    QLabel* playbackStartLabel_ = nullptr;
    LevelMeter* meter_ = nullptr;
    ClipLight* clipLight_ = nullptr;
    LyricsDock* lyricsDock_ = nullptr;
    QPushButton* lyricsPick_ = nullptr;
    KeyTempoControls* keyTempoControls_ = nullptr;
    // The settings' switch: each song keeps the key and tempo it was sung in.
    bool rememberKeyTempo_ = true;
};

}  // namespace tunebox::gui
