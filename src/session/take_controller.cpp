#include "session/take_controller.h"

#include <algorithm>

#include "core/ling_buffer.h"
#include "core/playback_clock.h"
#include "core/wave_format.h"
#include "playback/heard_position.h"
#include "playback/wav_length.h"
#include "session/accompaniment_player.h"
#include "session/position_time.h"

namespace tunebox {
namespace {

TakeButton playButton(TakePlayer player) {
    return player == TakePlayer::kAccompaniment ? TakeButton::kAccompanimentPlay
                                                : TakeButton::kRecordedPlay;
}

TakeButton pauseButton(TakePlayer player) {
    return player == TakePlayer::kAccompaniment ? TakeButton::kAccompanimentPause
                                                : TakeButton::kRecordedPause;
}

}  // namespace

TakeController::TakeController(AudioBackend& audio, Dispatcher& dispatcher, TakeListener& listener)
    : audio_(audio),
      listener_(listener),
      accompanimentPlayer_(audio),
      recordedPlayer_(audio),
      capture_(dispatcher, audio) {
    capture_.registerLevelMeter(&TakeController::onLevels, this);
    capture_.registerFaultNotice(&TakeController::onFault, this);
    capture_.registerClipNotice(&TakeController::onClip, this);
}

void TakeController::setSourceOptions(const SourceOptions& options) {
    accompanimentPlayer_.setSourceOptions(options);
    recordedPlayer_.setSourceOptions(options);
}

void TakeController::onLevels(int32_t first, int32_t second, void* context) {
    static_cast<TakeController*>(context)->listener_.showLevels(first, second);
}

void TakeController::onFault(CaptureFault fault, void* context) {
    static_cast<TakeController*>(context)->listener_.captureFaulted(fault);
}

void TakeController::onClip(uint32_t clippedBlocks, void* context) {
    static_cast<TakeController*>(context)->listener_.blockClipped(clippedBlocks);
}

PlayerStatus& TakeController::status(TakePlayer player) {
    return player == TakePlayer::kAccompaniment ? accompaniment_ : recorded_;
}

WaveCtl& TakeController::engine(TakePlayer player) {
    return player == TakePlayer::kAccompaniment ? static_cast<WaveCtl&>(accompanimentPlayer_)
                                                : recordedPlayer_;
}

PlayStart TakeController::playAccompaniment(const std::optional<TrackEntry>& track) {
    if (!track) {
        return PlayStart::kNoTrack;
    }
    if (accompaniment_.state == kPlaying) {
        accompaniment_.restartMarker = 1;
        return PlayStart::kStarted;
    }
    if (accompaniment_.state == kPaused) {
        accompaniment_.restartMarker = 0;
        togglePause(TakePlayer::kAccompaniment);
        return PlayStart::kStarted;
    }
    listener_.showFace(TakeButton::kAccompanimentPause, false);
    listener_.showFace(TakeButton::kAccompanimentPlay, true);
    allocateMixBuf(accompanimentPlayer_.mixBuf(), kEngineBlockBytes, kEngineBlockCount);
    setUpAccompanimentPlayer(accompanimentPlayer_, *track);
    accompaniment_.length = track->length;
    if (accompanimentPlayer_.wavOpenFile(track->path, accompaniment_.position,
                                         accompaniment_.length) == 0) {
        // The PLAY face stays lit: that is how a failed start has always looked.
        return PlayStart::kOpenFailed;
    }
    accompaniment_.state = kPlaying;
    takeWithoutAccompaniment_ = false;
    accompanimentRunStart_ = adjustStartPosition(accompaniment_.position);
    listener_.tickerChanged(TakePlayer::kAccompaniment, true);
    return accompanimentPlayer_.wavPlay() == 1 ? PlayStart::kStarted : PlayStart::kDeviceFailed;
}

void TakeController::togglePause(TakePlayer player) {
    PlayerStatus& current = status(player);
    if (current.state == kPaused) {
        current.state = kPlaying;
        engine(player).wavPause(0);
        listener_.showFace(pauseButton(player), false);
    } else if (current.state == kPlaying) {
        current.state = kPaused;
        engine(player).wavPause(1);
        listener_.showFace(pauseButton(player), true);
        refresh(player);
    }
}

void TakeController::stopPlayer(TakePlayer player) {
    engine(player).wavStop();
    status(player).state = kIdle;
    status(player).restartMarker = 0;
    showIdle(player);
}

void TakeController::showIdle(TakePlayer player) {
    listener_.tickerChanged(player, false);
    listener_.showFace(playButton(player), false);
    listener_.showFace(pauseButton(player), false);
}

void TakeController::stopAccompaniment(bool reset) {
    stopPlayer(TakePlayer::kAccompaniment);
    if (reset) {
        accompaniment_.position = 0;
        refreshAccompaniment();
    }
}

void TakeController::pauseAccompaniment() {
    // Pausing and then stopping leaves a player that remembers where it
    // stopped: the next PLAY opens the file afresh from there. It looks
    // paused the way the audition does, PLAY and PAUSE both lit.
    const bool pausing = accompaniment_.state == kPlaying;
    togglePause(TakePlayer::kAccompaniment);
    stopAccompaniment(false);
    if (pausing) {
        listener_.showFace(TakeButton::kAccompanimentPlay, true);
        listener_.showFace(TakeButton::kAccompanimentPause, true);
    }
}

PlayStart TakeController::playRecorded() {
    if (outputFile_.empty() || captureActive()) {
        return PlayStart::kNoTrack;
    }
    if (recorded_.state == kPlaying) {
        // The accompaniment's marker, as it always was; nothing reads it.
        accompaniment_.restartMarker = 1;
        return PlayStart::kStarted;
    }
    if (recorded_.state == kPaused) {
        togglePause(TakePlayer::kRecorded);
        return PlayStart::kStarted;
    }
    listener_.showFace(TakeButton::kRecordedPlay, true);
    applyPreset(recordedPlayer_, TrackEntry{});
    const std::string& file = auditionFile_.empty() ? outputFile_ : auditionFile_;
    wavGetLength(file, recorded_.length);
    if (recordedPlayer_.wavOpenFile(file, recorded_.position, recorded_.length) == 0) {
        stopPlayer(TakePlayer::kRecorded);
        return PlayStart::kOpenFailed;
    }
    recorded_.state = kPlaying;
    recordedRunStart_ = adjustStartPosition(recorded_.position);
    listener_.tickerChanged(TakePlayer::kRecorded, true);
    return recordedPlayer_.wavPlay() == 1 ? PlayStart::kStarted : PlayStart::kDeviceFailed;
}

void TakeController::tick(TakePlayer player) {
    if (player == TakePlayer::kAccompaniment && takeWithoutAccompaniment_) {
        // The idle player has nothing to finish; only the take's time moves.
        refreshAccompaniment();
        return;
    }
    PlayerStatus& current = status(player);
    if (engine(player).wavIsStopped()) {
        finishedByItself(player);
    }
    if (current.dragged == 0 && current.state != kPaused) {
        refresh(player);
    }
}

// The end of the accompaniment is the end of the take.
void TakeController::finishedByItself(TakePlayer player) {
    PlayerStatus& current = status(player);
    current.state = kIdle;
    showIdle(player);
    current.position = 0;
    if (player == TakePlayer::kAccompaniment) {
        stopRecorder();
    }
    refresh(player);
}

void TakeController::moveTrackbar(TakePlayer player, bool dragging, int value) {
    PlayerStatus& current = status(player);
    current.dragged = dragging ? 1 : 0;
    current.position = trackbarToBytes(std::clamp(value, 0, kTrackbarMax), current.length);
}

void TakeController::close() {
    if (accompaniment_.state != kIdle) {
        stopAccompaniment(false);
    }
}

void TakeController::refresh(TakePlayer player) {
    if (player == TakePlayer::kAccompaniment) {
        refreshAccompaniment();
    } else {
        refreshRecordedTrackbar();
    }
}

// The start of this run plus what the device has played, as song time. The
// player's own clock rounds to whole seconds and so reads up to a second
// ahead, which PAUSE would keep and PLAY skip.
uint32_t TakeController::accompanimentHeard() {
    if (accompaniment_.state != kIdle) {
        if (const auto heard = heardSongPosition(accompanimentPlayer_, accompanimentRunStart_)) {
            return *heard;
        }
    }
    return accompaniment_.position;
}

void TakeController::refreshAccompaniment() {
    AccompanimentReadout readout;
    if (accompaniment_.state == kIdle) {
        readout.trackbar = 0;
    } else {
        accompaniment_.position = accompanimentHeard();
        if (accompaniment_.dragged == 0) {
            readout.trackbar = static_cast<int>(accompanimentPlayer_.wavGetSliderPos());
        }
    }
    readout.delay = takeDelay();
    readout.position =
        takeWithoutAccompaniment_ ? takeWithoutAccompanimentBytes() : accompaniment_.position;
    listener_.showAccompaniment(readout);
}

// The mixer measures the delay afresh at every block, also while a take winds
// down after the accompaniment's device has closed, when the figure is the
// capture position alone. The read-out follows the mixer only while both
// devices run, and keeps the delay the take was lined up with after it.
int32_t TakeController::takeDelay() {
    const SyncMx& mixer = capture_.syncMx();
    if (captureActive() && accompaniment_.state == kPlaying) {
        takeDelay_ = mixer.aligned() ? mixer.alignedDelay() : mixer.currentDelay();
    }
    return takeDelay_;
}

// How long the take has run: the capture position since REC handed the
// starting pair to the mixer.
uint32_t TakeController::takeWithoutAccompanimentBytes() {
    const uint32_t start = capture_.syncMx().startCapturePosition();
    const uint32_t now = captureActive() ? capture_.capturePosition() : start;
    return now > start ? now - start : 0;
}

void TakeController::refreshRecordedTrackbar() {
    if (recorded_.state == kIdle) {
        listener_.showRecordedTrackbar(0);
    } else {
        // As for the accompaniment: where the listener is, from the device.
        if (recordedPlayer_.state() != kPlayerStopped) {
            recorded_.position = recordedRunStart_ + recordedPlayer_.wavGetDevicePosition();
        }
        if (recorded_.dragged == 0) {
            listener_.showRecordedTrackbar(static_cast<int>(recordedPlayer_.wavGetSliderPos()));
        }
    }
    listener_.showRecordedPosition(recorded_.position);
}

}  // namespace tunebox
