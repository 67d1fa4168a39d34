#pragma once
// SyncMx lines the voice (P1Buf) up with the accompaniment that was actually
// heard (P2Buf) and adds the two into blocks for the output file. The lag is
// the capture position minus the playback position, or a fixed manual value;
// it is applied once, before the first mixed block, and a measured lag is
// followed from then on through the output's stalls (see followDevices).
//
// Owning thread only (the capture pump); no locks.

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>

#include "core/ling_buffer.h"

namespace tunebox {

class InputDevice;

// The gain, in percent, of both the voice and the accompaniment in a take.
inline constexpr int32_t kUnityGain = 100;
class PlaybackFeed;

class SyncMx {
  public:
    SyncMx() = default;
    SyncMx(const SyncMx&) = delete;
    SyncMx& operator=(const SyncMx&) = delete;

    // Sets up P1Buf and P2Buf (30 slots each) and pBuf. `playback` is queried
    // for its output position; null records without accompaniment.
    int allocate(uint32_t p1SlotSize, uint32_t p2SlotSize, int32_t manualDelay,
                 PlaybackFeed* playback, int32_t manualFlag);
    void setInputDevice(InputDevice* device) { input_ = device; }
    // Added to each delay the positions give (not to a manual delay): what a
    // calibration found the devices' positions do not see. Kept from take
    // to take until set again.
    void setCalibration(int32_t bytes) { calibration_ = bytes; }
    // The two device positions taken right after the accompaniment started;
    // kept for the read-outs, the mix does not use them.
    void setStartPositions(uint32_t playbackBytes, uint32_t captureBytes);

    // Queues a voice block; 0 when P1Buf is full (the block is lost, but
    // still counted in the voice byte total).
    int P1_WriteBuf(const uint8_t* bytes, uint32_t length, uint32_t endFlag);
    // Queues an accompaniment block; a full ring drops it silently.
    void P2_WriteBuf(const uint8_t* bytes, uint32_t length, uint32_t endFlag);

    // The voice has stopped for good (STOP, a fault): what P1Buf holds is
    // the last of it, and the take ends with its last sample.
    void endVoice() { voiceEnded_ = true; }
    // The capture is being stopped: its position no longer says where the
    // voice stands, so the delay is no longer followed.
    void stopFollowing() { following_ = false; }

    // Mixes one block of the block size into `destination`. Returns 1 with
    // the block's length and end flag, or 0 while the delay cannot be applied
    // yet or either ring lacks a full block. After endVoice the last voice
    // bytes come out as a shorter block with the end flag, over as much of
    // the accompaniment (silence where there is none); the accompaniment's
    // own end still ends the take first.
    int mixBlock(uint8_t* destination, uint32_t& length, uint32_t& endFlag);

    // The voice half of the last mixed block, lined up and before the mix:
    // as many bytes as that block.
    const uint8_t* voiceBlock() const { return pBuf_.get(); }

    // The delay (bytes, whole frames) the last mix step measured or took.
    int32_t currentDelay() const { return currentDelay_; }
    uint32_t microphoneBytes() const { return microphoneBytes_; }
    uint32_t startPlaybackPosition() const { return startPlayback_; }
    uint32_t startCapturePosition() const { return startCapture_; }
    int32_t aligned() const { return aligned_; }
    // The delay the one-time alignment applied.
    int32_t alignedDelay() const { return alignedDelay_; }
    // The output's stalls seen during the take (underruns and the like).
    uint32_t outputStalls() const { return stallsSeen_; }
    // Where, in bytes of the take, voice and accompaniment stopped lining up
    // because the devices' positions moved apart in a way that could not be
    // placed exactly; empty while the take is in sync.
    std::optional<uint64_t> outOfSyncFrom() const;

    void free();

  private:
    int32_t measuredDelay();
    void align(int32_t delay);
    bool followDevices(int32_t delay);
    bool holdsBack(int32_t delay, bool standing);
    void noteStalls();
    void logReading(const char* verdict, int32_t delay) const;
    void oweAccompanimentSilence(uint64_t at, uint32_t bytes);
    uint64_t accompanimentNeeded(uint32_t length) const;
    int bothHaveABlock() const;
    uint32_t lastBlockLength() const;
    uint32_t nextBlockLength() const;
    void readMicrophone(uint32_t length);
    void readAccompaniment(uint8_t* destination, uint32_t length, uint32_t& endFlag);
    void addInto(uint8_t* destination, uint32_t length) const;

    int32_t currentDelay_ = 0;
    int32_t manualDelay_ = 0;
    int32_t calibration_ = 0;
    uint32_t microphoneBytes_ = 0;
    int32_t discardSelector_ = 1;  // 1: the alignment discards voice bytes
    uint32_t blockSize_ = 0;
    std::unique_ptr<uint8_t[]> pBuf_;
    int32_t aligned_ = 0;
    PlaybackFeed* playback_ = nullptr;
    InputDevice* input_ = nullptr;
    int32_t manualFlag_ = 0;
    LingBuffer P1Buf;
    LingBuffer P2Buf;
    int32_t microphoneGain_ = kUnityGain;
    int32_t accompanimentGain_ = kUnityGain;
    uint32_t startPlayback_ = 0;
    uint32_t startCapture_ = 0;
    // Silence still owed in front of the voice when the voice was captured
    // ahead of the accompaniment (a negative delay).
    uint32_t leadSilence_ = 0;
    int32_t alignedDelay_ = 0;
    bool voiceEnded_ = false;
    bool accompanimentEnded_ = false;  // its end-of-stream block is queued

    // Silence owed in the accompaniment: `bytes` of it before its byte `at`
    // is mixed, for a stretch the output stood still.
    struct Gap {
        uint64_t at;
        uint32_t bytes;
    };
    std::deque<Gap> accompanimentGaps_;
    uint64_t accompanimentQueued_ = 0;  // bytes put into P2Buf
    uint64_t accompanimentMixed_ = 0;   // of them, bytes mixed
    uint64_t takeBytes_ = 0;            // bytes handed out as the take
    uint32_t lastPlayed_ = 0;           // the playback position last read
    uint32_t lastCaptured_ = 0;         // the capture position read with it
    uint32_t playedBefore_ = 0;         // and the one read before it
    bool following_ = true;
    int32_t followedDelay_ = 0;  // the delay the mix is lined up with now
    // A change no stall explains, held back until it has lasted: the delay
    // it stands at, the capture position from which it has stood there, the
    // one at which holding began, and the take's length then.
    struct HeldChange {
        int32_t delay;
        uint32_t since;
        uint32_t first;
        uint64_t takeAt;
    };
    std::optional<HeldChange> held_;
    uint32_t stallsSeen_ = 0;
    uint32_t stallsFollowed_ = 0;      // of them, those the followed delay accounts for
    std::optional<uint64_t> stallAt_;  // where the latest stall began
    std::optional<uint64_t> outOfSyncFrom_;
};

// Adds two 16-bit samples scaled by percent gains, truncating toward zero and
// clipping to +-32767 (never -32768).
int16_t mixSample(int16_t microphone, int16_t accompaniment, int32_t microphoneGain,
                  int32_t accompanimentGain);

// Mixes `length` bytes of voice samples into the accompaniment samples in
// `destination`, sample by sample, the way every take is mixed.
void mixVoiceInto(const uint8_t* voice, uint8_t* destination, uint32_t length,
                  int32_t microphoneGain = kUnityGain, int32_t accompanimentGain = kUnityGain);

}  // namespace tunebox
