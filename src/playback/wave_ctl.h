#pragma once
// The player: one accompaniment source played through the output device,
// every block passing the effect chain on its way. A ring of a few large
// buffers is filled ahead (`prefill`) and then kept topped up by a periodic
// 200 ms timer, one buffer per tick (`fillOne`); the device's done-callback
// only counts the buffers it hands back.
//
// Threads: the owner's thread calls everything below; the timer's thread runs
// the tick, which may stop the player by itself at the end of the source; the
// device's thread runs the done-callback. One recursive lock per player is
// taken by the tick, by seek, restart and stop, by the effect setters and by
// the clock queries (which must not read a device the tick is closing).
//
// Lifecycle: wavInit -> wavOpenFile -> wavPlay <-> wavPause -> stopped, by
// wavStop or by the source's end. A stopped player needs wavInit again.

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "effects/effect_control.h"
#include "effects/key_tempo_stage.h"
#include "platform/audio_backend.h"
#include "platform/audio_device.h"
#include "playback/audio_source.h"
#include "playback/block_observer.h"
#include "playback/key_tempo_change.h"
#include "playback/player_settings.h"
#include "playback/song_clock.h"
#include "playback/source_options.h"
#include "playback/wave_buf.h"

namespace tunebox {

enum PlayerState : uint32_t { kPlayerStopped = 0, kPlayerPlaying = 1, kPlayerPaused = 2 };

class WaveCtl {
  public:
    // Devices and timers come from `backend`; `observer` (none when null) is
    // shown every block filled. Both must outlive the player.
    explicit WaveCtl(AudioBackend& backend, BlockObserver* observer = nullptr)
        : backend_(backend), observer_(observer) {}
    ~WaveCtl();
    WaveCtl(const WaveCtl&) = delete;
    WaveCtl& operator=(const WaveCtl&) = delete;

    // Buffer geometry for the next wavInit: `count` buffers (at most 30 are
    // made) of sectorsPerRead x count sectors of 2,352 bytes each. Without
    // it wavInit uses 3 buffers of 13 x 3 sectors (91,728 bytes, 0.52 s).
    void wavSetGeometry(uint32_t count, uint8_t sectorsPerRead);

    // (Re)initialises the player, stopping it first when it is initialised:
    // allocates the ring and sets up the effect chain from `settings`.
    void wavInit(const PlayerSettings& settings);

    // How the next wavOpenFile opens its source (which MP3 decoder first).
    void setSourceOptions(const SourceOptions& options);
    const SourceOptions& sourceOptions() const { return sourceOptions_; }

    // Opens the source, moves it to byte `start` (adjusted as
    // adjustStartPosition says), plays `length` bytes from there and fills
    // the ring. Returns 1, or 0 when the file cannot be opened.
    int wavOpenFile(const std::string& path, uint32_t start, uint32_t length);

    // Opens the output device, queues what the ring holds and starts the
    // timer. Returns 1, or 0 when the device cannot be opened (see
    // lastDeviceError) or nothing was initialised.
    int wavPlay();

    // 1 pauses a playing player (timer and device), 0 resumes a paused one.
    void wavPause(int pause);

    // For a player with no device (a take mixed again from its files): drops
    // what the ring holds, as if it had been played, and fills the next block
    // exactly as a tick of a playing device would, showing it to the
    // observer. Returns 1 when a block was filled, 0 when the ring could not
    // take one.
    int wavRenderNext();

    // Full stop: device, timer, source, buffers and effect state.
    void wavStop();

    // Moves to `slider` ten-thousandths of the length and plays on from
    // there; a paused player stays paused. At the end the player stops.
    void wavSeekSlider(uint32_t slider);

    // The time played; returns 1, or -1 while no device is open.
    int wavGetTime(uint32_t& minutes, uint32_t& seconds, uint32_t& frames);

    // The time played as ten-thousandths of the length; 0 when stopped.
    uint32_t wavGetSliderPos();

    // 1 once the player has stopped, by wavStop or at the source's end.
    int wavIsStopped() const;

    // 1 when `position` has reached `limit`, or the play range's stop
    // position (when enabled) lies at or before `positionAtFill`.
    int wavIsAtEnd(uint32_t position, uint32_t limit, const PlayRange& range,
                   uint32_t positionAtFill) const;

    // Effect settings, applied while the player is initialised and not
    // stopped. Gains are the equaliser's band values; tenths are passed on
    // to the reverb divided by 10.
    void wavSetBand(int band, int gain);
    void wavSetLevel(int32_t p0);
    void wavSetEqualiserFlag(int32_t p3);
    // The room size is set from the track entry right after wavInit, so it
    // acts whenever the player is initialised.
    void wavSetRoomSize(int32_t tenths);
    void wavSetDamping(int32_t tenths);
    void wavSetWidth(int32_t tenths);
    // New key and tempo, applied from the next block filled, without a gap.
    // Only a player set up with a key or tempo of its own, or told they may
    // move, has the stage; one set up neutral ignores it (the stage would
    // need memory mid-run). Back at neutral the stretcher plays out what it
    // holds and the source is then played as it is, bit for bit. An
    // initialised player takes it before it plays too, as one rendering
    // without a device does.
    void wavSetKeyTempo(const KeyTempo& keyTempo);
    KeyTempo wavGetKeyTempo() const;
    // Every change wavSetKeyTempo applied since the file was opened, with
    // the block it applied from. Kept when the player stops, so that a take
    // that outlasts its song still finds them.
    KeyTempoChanges wavGetKeyTempoChanges() const;
    // Replaces the play-range block; the position of the block being played
    // (word 5) is the player's own and is kept.
    void wavSetPlayRange(const PlayRange& range);

    // Bytes the device has played in the current run; 0 without a device.
    // The mixer pairs it with the input device's position.
    uint32_t wavGetDevicePosition();
    // Where the device stood still in the current run; none without a device.
    OutputStalls wavGetDeviceStalls(uint32_t first);
    // The same as bytes of the song: differs from the device's at a tempo
    // other than 100 %. The time display and the slider follow it.
    uint32_t wavGetSongPosition();

    // 1 when the audio backend offers at least one output device.
    int wavHasOutputDevice() const;

    // One second back or forward in the source (not wired to any control).
    // Forward past the length stops the player.
    void wavStepBack();
    void wavStepForward();

    // What the last failed device open said, for a command's error line.
    std::string lastDeviceError() const;

    // Observation for tests and read-outs. The positions are the owner's to
    // read while no tick runs (not playing).
    PlayerState state() const { return static_cast<PlayerState>(state_.load()); }
    uint32_t readPosition() const { return readPosition_; }
    uint32_t seekPosition() const { return seekPosition_; }
    int32_t bufferCount() const { return bufferCount_; }
    uint32_t bufferSize() const { return bufferSize_; }
    // Buffers filled and waiting for the device (never more than count - 1).
    uint32_t filledCount();
    // Buffers at the device and not yet handed back.
    int32_t outstandingCount() const { return outstanding_.load(); }

  private:
    // Fill every free slot of the ring from the source; fill the next one.
    // Returns 1 when anything was tried, 0 when nothing could be.
    int prefill();
    int fillOne();
    int fillNext();
    void releaseResources();
    void resetBlock();
    void allocateBuffers();
    uint32_t nextIndex(uint32_t index) const;
    bool slotFree() const;
    struct SlotRead {
        uint32_t count = 0;     // bytes in the slot
        uint32_t consumed = 0;  // bytes taken from the source
        uint32_t ended = 0;     // nothing more will come
        bool viaStage = false;  // the stage holds the source's end back
        // The first bytes may be the stage's tail at full tempo; the rest
        // were made at `tempoPercent`.
        uint32_t tailBytes = 0;
        int tempoPercent = kFullTempo;
    };
    SlotRead readIntoSlot(WaveBuf& slot);
    SlotRead readThroughStage(uint8_t* into, uint32_t bytes);
    SlotRead readFromSource(uint8_t* into, uint32_t bytes);
    void startSourceRun();
    // The play range's stop position, when enabled, at or before the fill.
    bool rangeEndReached(const PlayRange& range, uint32_t positionAtFill) const;
    int commit(const SlotRead& read, uint32_t count, uint32_t last);
    WaveBuf* takeFilled();
    void writeSlot(WaveBuf& slot);
    void seekSource(uint32_t position, uint32_t permyriad);
    void setReverb(void (*setter)(Reverb&, float), int32_t tenths);

    void openDevice();
    void closeDevice();
    void startTimer();
    void stopTimer();
    void tick();
    void restart();
    void onBufferDone();

    template <class Change>
    void whileRunning(Change change);

    AudioBackend& backend_;
    BlockObserver* const observer_;
    std::atomic<uint32_t> initialised_{0};
    std::atomic<uint32_t> endOfSource_{0};
    std::atomic<uint32_t> drained_{0};
    std::atomic<int32_t> outstanding_{0};
    int32_t outstandingTarget_ = 0;
    std::atomic<uint32_t> state_{kPlayerStopped};
    uint32_t writeIndex_ = 0;
    uint32_t readIndex_ = 0;
    int32_t bufferCount_ = 0;
    std::array<WaveBuf, kMaxWaveBufs> waveBuf_;
    uint32_t runStartPosition_ = 0;
    uint32_t seekPosition_ = 0;
    uint32_t readPosition_ = 0;
    std::unique_ptr<OutputDevice> device_;
    std::string lastDeviceError_;
    WaveFormat outputFormat_ = kNativeFormat;
    std::unique_ptr<AudioSource> source_;
    SourceOptions sourceOptions_;
    std::atomic<uint32_t> timerId_{0};
    uint32_t timerPeriod_ = 0;
    uint32_t length_ = 0;
    uint32_t fileSource_ = 1;
    EffectControl ctl_;
    // Present only for a player set up off the neutral key and tempo, or
    // told they may move.
    std::unique_ptr<KeyTempoStage> keyTempo_;
    KeyTempo keyTempoWanted_;
    // The stage renders the source; or it plays out its tail, after which
    // the source is read directly (or through a fresh stage when the key or
    // tempo moved again meanwhile).
    bool stageInUse_ = false;
    bool stageDraining_ = false;
    uint32_t blocksFilled_ = 0;  // since the file was opened
    KeyTempoChanges keyTempoChanges_;
    SongClock songClock_;
    uint32_t bytesPerSecond_ = kNativeBytesPerSecond;
    uint32_t baseSeconds_ = 0;
    mutable std::recursive_mutex lock_;
    uint32_t bufferSize_ = 0;
    uint8_t sectorsPerRead_ = 0;
    uint32_t wantedCount_ = 0;
};

}  // namespace tunebox
