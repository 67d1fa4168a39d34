// The recorder's side of the take controller: REC, the level monitor and the
// recorder group's STOP.

#include <algorithm>
#include <filesystem>

#include "core/wave_format.h"
#include "session/take_controller.h"
#include "session/voice_file.h"

namespace tunebox {
namespace {

// 25 ms of sound: the meter moves smoothly. Deliberately not whole frames.
constexpr uint32_t kMonitorSlotBytes = 4410;

}  // namespace

void TakeController::setOutputFile(const std::string& path) {
    outputFile_ = path;
    capture_.setOutputFileName(path);
}

// The take lasts as long as the accompaniment plays from its start point;
// an accompaniment of unknown length counts as the voice alone. The voice
// file beside it is as long again.
uint64_t TakeController::roomFor(const RecordRequest& request) const {
    if (!request.track || request.track->length == 0) {
        return takeRoomBytes(std::nullopt);
    }
    const uint32_t length = request.track->length;
    const uint64_t take = takeRoomBytes(length - std::min(accompaniment_.position, length));
    return request.voiceFile ? 2 * take : take;
}

// The note names the track by its absolute path, so that the take can be
// mixed again from any folder.
void TakeController::chooseVoiceFile(const RecordRequest& request) {
    if (!request.track || !request.voiceFile) {
        capture_.setVoiceFile({}, {});
        return;
    }
    std::error_code error;
    const std::filesystem::path track = std::filesystem::absolute(request.track->path, error);
    capture_.setVoiceFile(
        voiceFilePath(outputFile_),
        {error ? request.track->path : track.string(), accompaniment_.position,
         request.track->length, accompanimentPlayer_.sourceOptions().builtinDecoderFirst,
         request.track->keyTempo});
}

RecStart TakeController::rec(const RecordRequest& request) {
    RecStart result;
    if (accompaniment_.state != kIdle || recorded_.state != kIdle) {
        return result;
    }
    if (captureActive() && monitorFlag_ != 1) {
        return result;
    }
    // Checked before the monitor stops: a refused REC leaves everything as
    // it was.
    const bool writesVoice = request.track && request.voiceFile;
    const RecCheck check = checkOutputBeforeRec(
        outputFile_, roomFor(request), writesVoice ? voiceFilePath(outputFile_) : std::string{});
    if (check.kind != RecRefusal::kNone) {
        result.refusalKind = check.kind;
        result.refusal = check.message;
        return result;
    }
    if (captureActive()) {
        stopMonitor();
    }
    applyCalibration(request, result);
    MixingWaveCtl* source = request.track ? &accompanimentPlayer_ : nullptr;
    chooseVoiceFile(request);
    if (capture_.startRecording(kNativeFormat, kEngineBlockBytes, kEngineBlockCount, source,
                                request.manualFlag, request.manualDelay) != 1) {
        result.refusalKind = RecRefusal::kCaptureFailed;
        result.refusal = capture_.lastError();
    } else {
        result.capturing = true;
        listener_.showFace(TakeButton::kRecord, true);
        takeDelay_ = 0;
        takeOverTrack_ = request.track.has_value();
        // Capture runs before the accompaniment starts, so that nothing the
        // singer hears is missing from the take.
        result.accompaniment = playAccompaniment(request.track);
        takeWithoutAccompaniment_ = accompaniment_.state == kIdle;
        if (takeWithoutAccompaniment_) {
            listener_.tickerChanged(TakePlayer::kAccompaniment, true);
        }
    }
    handToMixer();
    return result;
}

// A take lined up by the positions gets the correction calibrated for its
// devices; a manual delay is absolute and takes none.
void TakeController::applyCalibration(const RecordRequest& request, RecStart& result) {
    if (request.track && request.manualFlag != 1) {
        result.calibration = savedCalibration(audio_);
    }
    capture_.syncMx().setCalibration(result.calibration ? result.calibration->correctionBytes : 0);
}

void TakeController::handToMixer() {
    const uint32_t capturePosition = capture_.capturePosition();
    const uint32_t playbackPosition = accompanimentPlayer_.wavGetDevicePosition();
    capture_.syncMx().setStartPositions(playbackPosition, capturePosition);
    listener_.showStartPositions(playbackPosition, capturePosition);
}

int TakeController::toggleMonitor(int32_t manualFlag) {
    if (monitorFlag_ == 1) {
        stopMonitor();
    } else if (!captureActive() &&
               capture_.startLevelMonitor(kNativeFormat, kMonitorSlotBytes, kEngineBlockCount,
                                          nullptr, manualFlag, 0) == 1) {
        listener_.showFace(TakeButton::kMonitor, true);
        monitorFlag_ = 1;
    }
    return monitorFlag_;
}

void TakeController::stopMonitor() {
    capture_.stop();
    listener_.showFace(TakeButton::kMonitor, false);
    monitorFlag_ = 0;
    listener_.showLevels(0, 0);
}

// The capture stops first, while the accompaniment still plays: the take
// then ends at the instant of the stop, with every accompaniment block sent
// up to it still there to go under the voice.
void TakeController::stopRecorder() {
    if (captureActive()) {
        const bool take = monitorFlag_ == 0;
        listener_.recorderStopping(true);
        capture_.stop();
        listener_.showFace(TakeButton::kRecord, false);
        listener_.showFace(TakeButton::kMonitor, false);
        monitorFlag_ = 0;
        listener_.recorderStopping(false);
        listener_.showLevels(0, 0);
        if (takeWithoutAccompaniment_) {
            takeWithoutAccompaniment_ = false;
            listener_.tickerChanged(TakePlayer::kAccompaniment, false);
            refreshAccompaniment();
        }
        if (take) {
            listener_.takeEnded(capture_.clippedBlocks());
        }
    }
    reportTakeSync();
    if (recorded_.state != kIdle) {
        stopPlayer(TakePlayer::kRecorded);
        recorded_.position = 0;
        refreshRecordedTrackbar();
    }
    if (accompaniment_.state != kIdle) {
        stopAccompaniment(true);
    }
}

// Also when the take closed itself at the accompaniment's end, before this
// STOP came.
void TakeController::reportTakeSync() {
    if (!takeOverTrack_ || captureActive()) {
        return;
    }
    takeOverTrack_ = false;
    // A take a fault cut short has said so; the positions of devices that
    // went away say nothing about its timing.
    if (capture_.fault() != CaptureFault::kNone) {
        return;
    }
    if (const auto from = capture_.syncMx().outOfSyncFrom()) {
        listener_.takeOutOfSync(*from);
    }
}

// A full disk or a microphone that went away ends the take at once, with or
// without the accompaniment: waiting for STOP would only lose more of it.
bool TakeController::endFaultedTake() {
    const bool recording = monitorFlag_ == 0;
    if (captureActive()) {
        stopRecorder();
    }
    return recording;
}

}  // namespace tunebox
