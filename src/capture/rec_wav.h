#pragma once
// CRecWav, the capture engine: records the microphone through the input
// device while the accompaniment plays, and turns every returned capture
// buffer into output: mixed with the accompaniment (SyncMx) into the output
// WAV, written alone when there is no accompaniment, or measured and thrown
// away (level monitor).
//
// Threads: the input device's callback only posts a capture notice to the
// dispatcher; everything else (ring puts and gets, effects, mixing, file
// writes, start, stop) runs on the thread that owns the dispatcher. A stop
// takes every buffer back from the device at once, with what it holds, and
// pumps that dispatcher by hand until they are all handled.

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "capture/accompaniment_note.h"
#include "capture/input_watchdog.h"
#include "capture/output_sink.h"
#include "capture/sync_mx.h"
#include "core/rec_ling_buffer.h"
#include "core/wave_format.h"
#include "effects/effect_control.h"
#include "platform/audio_backend.h"
#include "platform/audio_device.h"
#include "platform/dispatcher.h"
#include "playback/playback_feed.h"

namespace tunebox {

enum RecState : int32_t { kRecClosed = 0, kRecCapturing = 1, kRecStopping = 2 };

// Why a running capture could not go on; the owner stops it and reports.
enum class CaptureFault { kNone, kOutputWrite, kInputDevice };

// The levels of each captured block (peak magnitudes of the left and right
// channel, 0..32767) and the context given at registration.
using LevelMeterCallback = void (*)(int32_t first, int32_t second, void* context);

// Told once per run, when its first fault is recorded, as a task of its own
// on the owning thread (never in the middle of a capture step). It may arrive
// while a stop is already waiting for buffers; stopping again does nothing.
using FaultNoticeCallback = void (*)(CaptureFault fault, void* context);

// Told on the owning thread each time a block of the take (or, with the
// level monitor, of the microphone) reaches full scale: the mix clipped it or
// the microphone delivered it clipped. `clippedBlocks` counts them this run.
using ClipNoticeCallback = void (*)(uint32_t clippedBlocks, void* context);

// Where the capture notices of one run go: a run's leftovers still queued
// after it closed find no engine and are dropped.
struct CaptureInbox;

class CRecWav {
  public:
    // The input device comes from `backend`, which must outlive the engine.
    CRecWav(Dispatcher& dispatcher, AudioBackend& backend);
    ~CRecWav();
    CRecWav(const CRecWav&) = delete;
    CRecWav& operator=(const CRecWav&) = delete;

    // The file the next recording is written to.
    void setOutputFileName(std::string path) { outputFileName_ = std::move(path); }
    // Where a take over an accompaniment also writes the voice alone, lined
    // up and before the mix (sample n of it is the voice in sample n of the
    // take), and the accompaniment noted in it; an empty path writes none.
    // Taken at the next start.
    void setVoiceFile(std::string path, AccompanimentNote note);

    // Starts capture into the output WAV; `playback` (null: the voice alone)
    // supplies the accompaniment and its position, and must outlive the run. Returns 1, or 0 (with
    // everything freed) when anything could not be set up.
    int startRecording(const WaveFormat& format, uint32_t slotSize, int32_t bufferCount,
                       PlaybackFeed* playback, int32_t manualFlag, int32_t manualDelay);
    // The same capture with every block measured and discarded.
    int startLevelMonitor(const WaveFormat& format, uint32_t slotSize, int32_t bufferCount,
                          PlaybackFeed* playback, int32_t manualFlag, int32_t manualDelay);
    // Ends the take where it stands: the buffers still at the device come
    // back with what they hold, the voice and the accompaniment are cut at
    // its last sample, and the engine closes. Returns 1.
    int stop();

    void setEffectsEnabled(int32_t enabled) { effectsEnabled_ = enabled; }
    void registerLevelMeter(LevelMeterCallback callback, void* context);
    void registerFaultNotice(FaultNoticeCallback callback, void* context);
    void registerClipNotice(ClipNoticeCallback callback, void* context);

    int32_t state() const { return state_; }
    int isActive() const { return state_ != kRecClosed; }
    // The input device's position in bytes; 0 without a device.
    uint32_t capturePosition();
    SyncMx& syncMx() { return syncMx_; }
    CaptureFault fault() const { return fault_; }
    // One line saying why the last start failed or what the fault was.
    const std::string& lastError() const { return lastError_; }
    // One line saying why the voice file of the last take stopped being
    // written; empty while it is fine. The take itself went on.
    const std::string& voiceFileError() const { return voiceError_; }
    int32_t queuedCount() const { return queued_; }
    // Blocks of the current or last run that reached full scale.
    uint32_t clippedBlocks() const { return clippedBlocks_; }

  private:
    int start(SinkMode mode, const WaveFormat& format, uint32_t slotSize, int32_t bufferCount,
              PlaybackFeed* playback, int32_t manualFlag, int32_t manualDelay);
    int openInput();
    bool openVoiceFile(SinkMode mode, const PlaybackFeed* playback);
    bool armWatchdog();
    int initialiseEffects(uint32_t slotSize);
    int queueAll();
    int failStart(std::string reason);
    void onCaptureDone(WaveHeader& header);
    void onInputSilent();
    void pump();
    int pumpVoice();
    void passOnVoice(RecLingSlot& slot);
    bool mixQueued();
    void finishTake();
    void requeue(WaveHeader& header);
    void unprepareReturned(WaveHeader& header);
    void reportLevels(const uint8_t* block, uint32_t length);
    void writeToSink(const uint8_t* bytes, uint32_t count);
    void noteClipping(const uint8_t* bytes, uint32_t count);
    void writeVoice(const uint8_t* bytes, uint32_t count);
    bool closeVoiceFile();
    void noteVoiceFault(const std::string& what);
    void recordFault(CaptureFault fault, std::string reason);
    void takeBackBuffers();
    void waitForOutstanding();
    void unprepareAll();
    int close();
    void freeAll();

    SyncMx syncMx_;
    RecLingBuffer RecBuf;
    int32_t queued_ = 0;  // buffers at the device or on their way back
    std::unique_ptr<InputDevice> device_;
    WaveFormat format_{};
    std::unique_ptr<uint8_t[]> cpybuf_;
    int32_t state_ = kRecClosed;
    std::recursive_mutex stopLock_;
    OutputSink sink_;
    OutputSink voiceSink_;
    int32_t pending_ = 0;
    uint32_t stopRetry_ = 0;
    Dispatcher& dispatcher_;
    AudioBackend& backend_;
    std::shared_ptr<CaptureInbox> inbox_;
    InputWatchdog watchdog_;
    int32_t effectsReady_ = 0;
    EffectControl micCtl_;
    PlaybackFeed* playback_ = nullptr;
    int32_t effectsEnabled_ = 1;
    LevelMeterCallback levelMeter_ = nullptr;
    void* levelMeterContext_ = nullptr;
    FaultNoticeCallback faultNotice_ = nullptr;
    void* faultNoticeContext_ = nullptr;
    ClipNoticeCallback clipNotice_ = nullptr;
    void* clipNoticeContext_ = nullptr;
    uint32_t clippedBlocks_ = 0;
    std::string outputFileName_;
    std::string voiceFileName_;
    AccompanimentNote voiceNote_;
    std::string voiceError_;
    CaptureFault fault_ = CaptureFault::kNone;
    std::string lastError_;
};

// Capture notices handled by every engine since the program started.
uint32_t handledCaptureNotices();

}  // namespace tunebox
