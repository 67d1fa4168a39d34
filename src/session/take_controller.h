#pragma once
// The take controller: the accompaniment player (whose every block also goes
// to the recorder), the player that auditions the take, and the capture
// engine, with the orders a user gives them: PLAY, PAUSE and STOP of either
// player, REC, the level monitor, and the ticks that notice a player's end.
// Both front ends drive it from their own thread; it talks back through a
// TakeListener and takes settings as values.

#include <cstdint>
#include <optional>
#include <string>

#include "capture/rec_wav.h"
#include "platform/audio_backend.h"
#include "platform/dispatcher.h"
#include "playback/mixing_wave_ctl.h"
#include "playback/wave_ctl.h"
#include "session/device_calibration.h"
#include "session/rec_refusal.h"
#include "session/take_listener.h"
#include "session/track_list.h"

namespace tunebox {

// How often the owner runs a running player's tick.
inline constexpr int kTickMilliseconds = 500;

enum PlayerMode : int { kIdle = 0, kPlaying = 1, kPaused = 2 };

// What the controller keeps about one player.
struct PlayerStatus {
    int state = kIdle;
    uint32_t position = 0;  // where the next open starts, in bytes
    uint32_t length = 0;
    int dragged = 0;        // the thumb is held
    int restartMarker = 0;  // set by PLAY while playing; nothing reads it
};

// How a PLAY of the accompaniment went. kDeviceFailed still counts as
// playing, as it always has: the player's tick finds it stopped.
enum class PlayStart { kNoTrack, kOpenFailed, kDeviceFailed, kStarted };

// REC's settings: the track (none records the voice alone) and the delay.
struct RecordRequest {
    std::optional<TrackEntry> track;
    int32_t manualFlag = 0;
    int32_t manualDelay = 0;  // bytes
    // Also write the voice alone beside a take over a track (voiceFilePath).
    bool voiceFile = true;
};

// How a REC went: whether capture runs, and how the accompaniment started
// (kNoTrack for the voice alone, or when capture did not start). When REC
// was refused, `refusal` says why in one line for the owner to show; when
// it was ignored (a player or a recording already runs) nothing is said.
struct RecStart {
    bool capturing = false;
    PlayStart accompaniment = PlayStart::kNoTrack;
    RecRefusal refusalKind = RecRefusal::kNone;
    std::string refusal;  // empty when it started or was ignored
    // The saved calibration added to the measured delay, if any.
    std::optional<DeviceCalibration> calibration;
};

class TakeController {
  public:
    TakeController(AudioBackend& audio, Dispatcher& dispatcher, TakeListener& listener);
    TakeController(const TakeController&) = delete;
    TakeController& operator=(const TakeController&) = delete;

    // The accompaniment.
    PlayStart playAccompaniment(const std::optional<TrackEntry>& track);
    void stopAccompaniment(bool reset);
    void pauseAccompaniment();
    void setAccompanimentStart(uint32_t bytes) { accompaniment_.position = bytes; }
    void setAccompanimentLength(uint32_t bytes) { accompaniment_.length = bytes; }

    // The recorder group.
    void setOutputFile(const std::string& path);
    // How both players open their files from the next PLAY on.
    void setSourceOptions(const SourceOptions& options);
    // The file the recorder group's PLAY auditions instead of the take (the
    // take mixed again with a nudge); empty auditions the take.
    void setAuditionFile(const std::string& path) { auditionFile_ = path; }
    // kNoTrack when ignored (no take named, or capture runs).
    PlayStart playRecorded();
    void pauseRecorded() { togglePause(TakePlayer::kRecorded); }
    void stopRecorder();
    RecStart rec(const RecordRequest& request);
    // 1 when the monitor is on after the press.
    int toggleMonitor(int32_t manualFlag);
    void setEcho(int32_t enabled) { capture_.setEffectsEnabled(enabled); }
    // Ends a take a capture fault cut short; true when it was a recording
    // (not the monitor), whose file was kept.
    bool endFaultedTake();

    // Either player.
    void togglePause(TakePlayer player);
    void tick(TakePlayer player);
    void moveTrackbar(TakePlayer player, bool dragging, int value);
    // The owner is closing: the accompaniment stops where it is.
    void close();

    const PlayerStatus& accompaniment() const { return accompaniment_; }
    // Where the singer is in the accompaniment, in bytes: while it plays,
    // what the device has played of it, not what was read ahead; else where
    // the next PLAY starts.
    uint32_t accompanimentHeard();
    const PlayerStatus& recorded() const { return recorded_; }
    int monitorOn() const { return monitorFlag_; }
    int captureActive() const { return capture_.isActive(); }
    CRecWav& capture() { return capture_; }
    MixingWaveCtl& accompanimentPlayer() { return accompanimentPlayer_; }
    WaveCtl& recordedPlayer() { return recordedPlayer_; }

  private:
    PlayerStatus& status(TakePlayer player);
    WaveCtl& engine(TakePlayer player);
    void finishedByItself(TakePlayer player);
    void stopPlayer(TakePlayer player);
    void showIdle(TakePlayer player);
    void stopMonitor();
    void applyCalibration(const RecordRequest& request, RecStart& result);
    void handToMixer();
    void reportTakeSync();
    uint64_t roomFor(const RecordRequest& request) const;
    void chooseVoiceFile(const RecordRequest& request);
    void refresh(TakePlayer player);
    void refreshAccompaniment();
    void refreshRecordedTrackbar();
    int32_t takeDelay();
    static void onLevels(int32_t first, int32_t second, void* context);
    static void onFault(CaptureFault fault, void* context);
    static void onClip(uint32_t clippedBlocks, void* context);
    uint32_t takeWithoutAccompanimentBytes();

    AudioBackend& audio_;
    TakeListener& listener_;
    MixingWaveCtl accompanimentPlayer_;
    WaveCtl recordedPlayer_;
    // After the players: it reads the accompaniment's copies and goes first.
    CRecWav capture_;
    PlayerStatus accompaniment_;
    PlayerStatus recorded_;
    std::string outputFile_;
    std::string auditionFile_;
    // Where the accompaniment's current run started, in bytes.
    uint32_t accompanimentRunStart_ = 0;
    uint32_t recordedRunStart_ = 0;
    // A take runs with no accompaniment playing (the voice alone, or a track
    // that would not start): the accompaniment's tick shows its time.
    bool takeWithoutAccompaniment_ = false;
    // The delay the mixer lined the take up with, for the read-out.
    int32_t takeDelay_ = 0;
    int monitorFlag_ = 0;
    // A take over an accompaniment runs; its sync is told when it ends.
    bool takeOverTrack_ = false;
};

}  // namespace tunebox
