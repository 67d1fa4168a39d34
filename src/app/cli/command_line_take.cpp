#include "app/cli/command_line_take.h"

#include "app/cli/input_checks.h"
#include "app/cli/overwrite_option.h"
#include "app/cli/source_settings.h"
#include "core/playback_clock.h"
#include "session/sync_note.h"
#include "session/voice_file.h"

namespace tunebox::cli {

CommandLineTake::~CommandLineTake() {
    controller_.stopRecorder();
}

int CommandLineTake::rec(const RecordingOptions& options) {
    error_.clear();
    output_ = options.output;
    RecordRequest request;
    if (!options.accompaniment.empty()) {
        TrackEntry track;
        if (!accompanimentUsable(options, track)) {
            return 0;
        }
        request.track = track;
        controller_.setAccompanimentStart(options.startBytes);
        accompanimentRunStart_ = adjustStartPosition(options.startBytes);
    }
    if (const auto problem = overwriteRefusal(options.output, options.overwrite)) {
        return failed(options.output + ": " + *problem);
    }
    request.voiceFile = options.voiceFile;
    if (request.track && request.voiceFile) {
        const std::string voice = voiceFilePath(options.output);
        if (const auto problem = overwriteRefusal(voice, options.overwrite)) {
            return failed(voice + ": " + *problem);
        }
    }
    request.manualFlag = options.manualFlag;
    request.manualDelay = options.manualDelay;
    controller_.setOutputFile(options.output);
    controller_.setSourceOptions(sourceOptionsFromSettings());
    controller_.setEcho(options.echo);
    const RecStart started = controller_.rec(request);
    if (!started.capturing) {
        return failed(started.refusal);
    }
    if (started.calibration) {
        delayNote_ = delaySourceNote(*started.calibration);
    }
    switch (started.accompaniment) {
        case PlayStart::kOpenFailed:
            return failed(options.accompaniment + ": cannot be opened");
        case PlayStart::kDeviceFailed:
            return failed("cannot play the accompaniment: " +
                          controller_.accompanimentPlayer().lastDeviceError());
        default:
            return 1;
    }
}

// The take is written in place as it is sung, so it must not be the file
// being played.
bool CommandLineTake::accompanimentUsable(const RecordingOptions& options, TrackEntry& track) {
    track.path = options.accompaniment;
    track.keyTempo = options.keyTempo;
    if (const auto problem = accompanimentRefusal(options.accompaniment, track.length)) {
        return failed(options.accompaniment + ": " + *problem);
    }
    if (const auto problem = outputRefusal(options.accompaniment, options.output)) {
        return failed(options.output + ": " + *problem);
    }
    if (options.startBytes >= track.length) {
        return failed(options.accompaniment + ": the start lies beyond its end");
    }
    return true;
}

// Nothing is left running after a refusal.
bool CommandLineTake::failed(std::string reason) {
    error_ = std::move(reason);
    controller_.stopRecorder();
    return false;
}

int CommandLineTake::monitor(int32_t manualFlag) {
    error_.clear();
    output_.clear();
    if (controller_.toggleMonitor(manualFlag) != 1) {
        return failed(capture().lastError());
    }
    return 1;
}

void CommandLineTake::runFor(std::chrono::milliseconds wait) {
    dispatcher_.waitForWork(wait);
    dispatcher_.pumpPending();
}

void CommandLineTake::tick() {
    if (accompanimentTicking_) {
        controller_.tick(TakePlayer::kAccompaniment);
    }
    if (recordedTicking_) {
        controller_.tick(TakePlayer::kRecorded);
    }
}

void CommandLineTake::showLevels(int32_t first, int32_t second) {
    firstLevel_ = first;
    secondLevel_ = second;
}

void CommandLineTake::tickerChanged(TakePlayer player, bool running) {
    (player == TakePlayer::kAccompaniment ? accompanimentTicking_ : recordedTicking_) = running;
}

void CommandLineTake::takeOutOfSync(uint64_t fromBytes) {
    syncNote_ = outOfSyncNote(fromBytes);
}

}  // namespace tunebox::cli
