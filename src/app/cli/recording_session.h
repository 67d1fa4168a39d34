#pragma once
// What the main dialog does around a take, for the command line: the REC
// road (capture first, then the accompaniment, then the starting positions
// for the mixer), the level monitor, and the recorder group's STOP. The
// owning thread is the caller's: it runs the capture notices in `runFor`.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

#include "capture/rec_wav.h"
#include "platform/queue_dispatcher.h"
#include "playback/mixing_wave_ctl.h"

namespace tunebox::cli {

struct RecordingOptions {
    std::string accompaniment;  // empty: the voice alone
    std::string output;
    int32_t manualFlag = 0;
    int32_t manualDelay = 0;  // bytes
    int32_t echo = 1;
    uint32_t startBytes = 0;  // where the accompaniment starts
};

class RecordingSession {
  public:
    // `backend` gives the devices and must outlive the session.
    explicit RecordingSession(AudioBackend& backend);
    ~RecordingSession();
    RecordingSession(const RecordingSession&) = delete;
    RecordingSession& operator=(const RecordingSession&) = delete;

    // Returns 1 once capture (and the accompaniment, when named) runs;
    // otherwise 0 with error() saying why and nothing left running.
    int rec(const RecordingOptions& options);
    int monitor(int32_t manualFlag);

    // Handles the capture notices that arrive within `wait`.
    void runFor(std::chrono::milliseconds wait);
    // 1 when the accompaniment has played to its end by itself.
    int accompanimentEnded() const;
    // The recorder group's STOP: the accompaniment, then capture, which
    // finishes the output file.
    void stop();

    CRecWav& capture() { return capture_; }
    MixingWaveCtl& player() { return player_; }
    const std::string& error() const { return error_; }
    int32_t firstLevel() const { return firstLevel_.load(); }
    int32_t secondLevel() const { return secondLevel_.load(); }
    uint32_t accompanimentLength() const { return length_; }

  private:
    bool accompanimentUsable(const RecordingOptions& options);
    int startAccompaniment(const RecordingOptions& options);
    static void onLevels(int32_t first, int32_t second, void* context);

    QueueDispatcher dispatcher_;
    MixingWaveCtl player_;
    CRecWav capture_;
    bool accompanied_ = false;
    uint32_t length_ = 0;
    std::string error_;
    std::atomic<int32_t> firstLevel_{0};
    std::atomic<int32_t> secondLevel_{0};
};

}  // namespace tunebox::cli
