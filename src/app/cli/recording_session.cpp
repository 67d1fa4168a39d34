#include "app/cli/recording_session.h"

#include "app/cli/input_checks.h"
#include "app/cli/source_settings.h"

namespace tunebox::cli {
namespace {

constexpr uint8_t kSectorsPerRead = 13;
constexpr int32_t kDefaultLevel = 100;  // percent
constexpr int kFlatBand = 24;
constexpr int32_t kDefaultRoomTenths = 9;
constexpr uint32_t kMonitorSlotBytes = 4410;  // 25 ms, deliberately not whole frames

}  // namespace

RecordingSession::RecordingSession() : capture_(dispatcher_) {
    capture_.registerLevelMeter(&RecordingSession::onLevels, this);
}

RecordingSession::~RecordingSession() {
    stop();
}

void RecordingSession::onLevels(int32_t first, int32_t second, void* context) {
    auto* session = static_cast<RecordingSession*>(context);
    session->firstLevel_ = first;
    session->secondLevel_ = second;
}

int RecordingSession::rec(const RecordingOptions& options) {
    error_.clear();
    accompanied_ = !options.accompaniment.empty();
    if (accompanied_ && !accompanimentUsable(options)) {
        return 0;
    }
    if (accompanied_ && options.startBytes >= length_) {
        error_ = options.accompaniment + ": the start lies beyond its end";
        return 0;
    }
    capture_.setOutputFileName(options.output);
    capture_.setEffectsEnabled(options.echo);
    if (!capture_.startRecording(kNativeFormat, kEngineBlockBytes, kEngineBlockCount,
                                 accompanied_ ? &player_ : nullptr, options.manualFlag,
                                 options.manualDelay)) {
        error_ = capture_.lastError();
        return 0;
    }
    if (accompanied_ && !startAccompaniment(options)) {
        stop();
        return 0;
    }
    const uint32_t capturePosition = capture_.capturePosition();
    const uint32_t playbackPosition = accompanied_ ? player_.wavGetDevicePosition() : 0;
    capture_.syncMx().setStartPositions(playbackPosition, capturePosition);
    return 1;
}

// The take is written in place as it is sung, so it must not be the file
// being played.
bool RecordingSession::accompanimentUsable(const RecordingOptions& options) {
    if (const auto problem = accompanimentRefusal(options.accompaniment, length_)) {
        error_ = options.accompaniment + ": " + *problem;
        return false;
    }
    if (const auto problem = outputRefusal(options.accompaniment, options.output)) {
        error_ = options.output + ": " + *problem;
        return false;
    }
    return true;
}

// Exactly as the dialog's PLAY: geometry, the copy ring, a flat preset, the
// source from the chosen start, then the device.
int RecordingSession::startAccompaniment(const RecordingOptions& options) {
    player_.wavSetGeometry(kEngineBlockCount, kSectorsPerRead);
    allocateMixBuf(player_.mixBuf(), kEngineBlockBytes, kEngineBlockCount);
    BandValues flat;
    flat.fill(kFlatBand);
    player_.wavInit(nullptr, kDefaultLevel, flat, 0, 0, 0, 0, PlayRange{}, 1);
    player_.wavSetRoomSize(kDefaultRoomTenths);
    player_.setSourceOptions(sourceOptionsFromSettings());
    if (player_.wavOpenFile(options.accompaniment, options.startBytes, length_) != 1) {
        error_ = options.accompaniment + ": cannot be opened";
        return 0;
    }
    if (player_.wavPlay() != 1) {
        error_ = "cannot play the accompaniment: " + player_.lastDeviceError();
        return 0;
    }
    return 1;
}

int RecordingSession::monitor(int32_t manualFlag) {
    error_.clear();
    accompanied_ = false;
    if (!capture_.startLevelMonitor(kNativeFormat, kMonitorSlotBytes, kEngineBlockCount, nullptr,
                                    manualFlag, 0)) {
        error_ = capture_.lastError();
        return 0;
    }
    return 1;
}

void RecordingSession::runFor(std::chrono::milliseconds wait) {
    dispatcher_.waitForWork(wait);
    dispatcher_.pumpPending();
}

int RecordingSession::accompanimentEnded() const {
    return accompanied_ && player_.wavIsStopped();
}

void RecordingSession::stop() {
    if (player_.state() != kPlayerStopped) {
        player_.wavStop();
    }
    if (capture_.isActive()) {
        capture_.stop();
    }
    firstLevel_ = 0;
    secondLevel_ = 0;
}

}  // namespace tunebox::cli
