#pragma once
// A take on the command line: the take controller on a plain dispatcher
// queue, with what the command line needs around it (the refusals of bad
// input with their reasons, the levels and which player's tick is due).
// The owning thread is the caller's: it runs the capture notices in `runFor`.

#include <chrono>
#include <cstdint>
#include <string>

#include "effects/key_tempo.h"
#include "platform/queue_dispatcher.h"
#include "session/take_controller.h"

namespace tunebox::cli {

struct RecordingOptions {
    std::string accompaniment;  // empty: the voice alone
    std::string output;
    int32_t manualFlag = 0;
    int32_t manualDelay = 0;  // bytes
    int32_t echo = 1;
    uint32_t startBytes = 0;  // where the accompaniment starts
    bool overwrite = false;   // an existing output may be replaced
    bool voiceFile = true;    // the voice alone beside a take over a track
    KeyTempo keyTempo{};      // of the accompaniment
};

class CommandLineTake final : private TakeListener {
  public:
    explicit CommandLineTake(AudioBackend& audio) : controller_(audio, dispatcher_, *this) {}
    ~CommandLineTake() override;
    CommandLineTake(const CommandLineTake&) = delete;
    CommandLineTake& operator=(const CommandLineTake&) = delete;

    // Returns 1 once capture (and the accompaniment, when named) runs;
    // otherwise 0 with error() saying why and nothing left running.
    int rec(const RecordingOptions& options);
    int monitor(int32_t manualFlag);

    // Handles the capture notices that arrive within `wait`.
    void runFor(std::chrono::milliseconds wait);
    // Runs the tick of each player that is running.
    void tick();

    TakeController& controller() { return controller_; }
    CRecWav& capture() { return controller_.capture(); }
    const std::string& error() const { return error_; }
    // Where in its file the accompaniment's run began, in bytes.
    uint32_t accompanimentRunStart() const { return accompanimentRunStart_; }
    // The file the take records into; empty for the monitor.
    const std::string& output() const { return output_; }
    // Where the take's delay comes from, when a calibration adds to it.
    const std::string& delayNote() const { return delayNote_; }
    // Where the finished take went out of sync, as the singer is told it;
    // empty for a take in sync.
    const std::string& syncNote() const { return syncNote_; }
    int32_t firstLevel() const { return firstLevel_; }
    int32_t secondLevel() const { return secondLevel_; }

  private:
    bool accompanimentUsable(const RecordingOptions& options, TrackEntry& track);
    bool failed(std::string reason);
    void showLevels(int32_t first, int32_t second) override;
    void tickerChanged(TakePlayer player, bool running) override;
    void takeOutOfSync(uint64_t fromBytes) override;

    QueueDispatcher dispatcher_;
    TakeController controller_;
    std::string error_;
    std::string output_;
    uint32_t accompanimentRunStart_ = 0;
    std::string delayNote_;
    std::string syncNote_;
    int32_t firstLevel_ = 0;
    int32_t secondLevel_ = 0;
    bool accompanimentTicking_ = false;
    bool recordedTicking_ = false;
};

}  // namespace tunebox::cli
