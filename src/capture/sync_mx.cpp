#include "capture/sync_mx.h"

#include <algorithm>
#include <cstring>

#include "core/heap.h"
#include "core/little_endian.h"
#include "platform/audio_device.h"
#include "playback/playback_feed.h"

namespace tunebox {
namespace {

constexpr int32_t kMixRingSlots = 30;
// A position read that straddles a step of the device clock is retried, so
// that both positions describe one instant.
constexpr int kPositionReadTries = 4;

// Rounds toward zero: 1,002 gives 1,000 and -6 gives -4.
int32_t wholeFrames(int32_t bytes) {
    constexpr auto kFrame = static_cast<int32_t>(kNativeFrameBytes);
    return bytes / kFrame * kFrame;
}

uint32_t capturePosition(InputDevice* input) {
    uint32_t bytes = 0;
    if (input == nullptr || input->position(bytes) != kAudioOk) {
        return 0;
    }
    return bytes;
}

uint32_t playbackPosition(PlaybackFeed* playback) {
    return playback == nullptr ? 0 : playback->devicePosition();
}

}  // namespace

int16_t mixSample(int16_t microphone, int16_t accompaniment, int32_t microphoneGain,
                  int32_t accompanimentGain) {
    const double value =
        microphone * (microphoneGain / 100.0) + accompaniment * (accompanimentGain / 100.0);
    const auto truncated = static_cast<int64_t>(value);
    if (truncated >= 32768) {
        return 32767;
    }
    if (truncated <= -32768) {
        return -32767;
    }
    return static_cast<int16_t>(truncated);
}

int SyncMx::allocate(uint32_t p1SlotSize, uint32_t p2SlotSize, int32_t manualDelay,
                     PlaybackFeed* playback, int32_t manualFlag) {
    free();
    blockSize_ = p1SlotSize;
    currentDelay_ = manualDelay;
    manualDelay_ = manualDelay;
    microphoneBytes_ = 0;
    playback_ = playback;
    manualFlag_ = manualFlag;
    startPlayback_ = startCapture_ = 0;
    if (!P1Buf.allocate(p1SlotSize, kMixRingSlots, "ﾒﾓﾘ確保失敗:P1Buf.ling[i].buf") ||
        !P2Buf.allocate(p2SlotSize, kMixRingSlots, "ﾒﾓﾘ確保失敗:P2Buf.ling[i].buf")) {
        free();
        return 0;
    }
    pBuf_ = heapAllocZeroed<uint8_t>(blockSize_);
    if (!pBuf_) {
        logAlways("ﾒﾓﾘ確保失敗:pBuf");
        free();
        return 0;
    }
    return 1;
}

void SyncMx::setStartPositions(uint32_t playbackBytes, uint32_t captureBytes) {
    startPlayback_ = playbackBytes;
    startCapture_ = captureBytes;
}

int SyncMx::P1_WriteBuf(const uint8_t* bytes, uint32_t length, uint32_t endFlag) {
    microphoneBytes_ += length;
    return P1Buf.put(bytes, length, endFlag);
}

void SyncMx::P2_WriteBuf(const uint8_t* bytes, uint32_t length, uint32_t endFlag) {
    if (P2Buf.put(bytes, length, endFlag) && endFlag == 1) {
        accompanimentEnded_ = true;
    }
}

int32_t SyncMx::measuredDelay() {
    if (manualFlag_) {
        return manualDelay_;
    }
    int64_t delay = 0;
    for (int attempt = 0; attempt < kPositionReadTries; ++attempt) {
        const uint32_t before = capturePosition(input_);
        const uint32_t played = playbackPosition(playback_);
        const uint32_t after = capturePosition(input_);
        // A running player's position only grows, so after the alignment a
        // 0 means its device has closed (the song ended or was stopped):
        // the delay the take was lined up with still stands.
        if (played == 0 && aligned_) {
            return currentDelay_;
        }
        delay = int64_t{after} - int64_t{played} + calibration_;
        if (before == after) {
            break;
        }
    }
    return static_cast<int32_t>(std::clamp<int64_t>(delay, INT32_MIN, INT32_MAX));
}

// A positive delay: the voice stream holds `delay` bytes captured before the
// accompaniment was heard; they are read out and thrown away once. Until that
// many bytes are queued nothing is consumed and the next call measures again.
//
// A negative delay (the capture converter behind the output, as with a sink
// monitor that hears the sound ahead of its nominal play time) cannot be read
// out of a ring: the accompaniment's first bytes have no voice at all. The
// voice is lined up by owing that much silence in front of it instead, spent
// by the following mix steps. It is applied once the voice has started to
// arrive (one block queued), the same moment a delay of 0 is taken, so both
// signs are measured with the devices running.
void SyncMx::align(int32_t delay) {
    LingBuffer& discarded = discardSelector_ == 1 ? P1Buf : P2Buf;
    if (delay < 0) {
        if (discarded.hasBytes(0)) {
            leadSilence_ = static_cast<uint32_t>(-int64_t{delay});
            aligned_ = 1;
            alignedDelay_ = delay;
        }
        return;
    }
    // Asked first, so that the scratch block is taken once, not per attempt.
    if (!discarded.hasBytes(static_cast<uint32_t>(delay))) {
        return;
    }
    const auto scratch = heapAllocZeroed<uint8_t>(static_cast<std::size_t>(delay) + 100);
    if (!scratch) {
        return;
    }
    uint32_t delivered = 0;
    uint32_t endFlag = 0;
    aligned_ = discarded.readBytes(scratch.get(), static_cast<uint32_t>(delay), delivered, endFlag);
    alignedDelay_ = delay;
}

int SyncMx::bothHaveABlock() const {
    const uint32_t voiceNeeded = blockSize_ - std::min(leadSilence_, blockSize_);
    return (voiceNeeded == 0 || P1Buf.hasBytes(voiceNeeded)) && P2Buf.hasBytes(blockSize_);
}

// Once the voice has ended nothing more arrives, so nothing is waited for:
// the rest of the voice (whole frames, at most a block) goes out, cut
// shorter only where an accompaniment that has ended stops first.
uint32_t SyncMx::lastBlockLength() const {
    uint64_t length = std::min<uint64_t>(uint64_t{leadSilence_} + P1Buf.queuedBytes(), blockSize_);
    if (accompanimentEnded_) {
        length = std::min(length, P2Buf.queuedBytes());
    }
    return static_cast<uint32_t>(length / kNativeFrameBytes * kNativeFrameBytes);
}

uint32_t SyncMx::nextBlockLength() const {
    if (voiceEnded_) {
        return lastBlockLength();
    }
    return bothHaveABlock() ? blockSize_ : 0;
}

void SyncMx::readMicrophone(uint32_t length) {
    const uint32_t silence = std::min(leadSilence_, length);
    std::memset(pBuf_.get(), 0, silence);
    leadSilence_ -= silence;
    uint32_t delivered = 0;
    uint32_t endFlag = 0;
    if (silence < length) {
        P1Buf.readBytes(pBuf_.get() + silence, length - silence, delivered, endFlag);
    }
}

void SyncMx::readAccompaniment(uint8_t* destination, uint32_t length, uint32_t& endFlag) {
    const auto available = static_cast<uint32_t>(std::min<uint64_t>(P2Buf.queuedBytes(), length));
    uint32_t delivered = 0;
    endFlag = 0;
    if (available > 0) {
        P2Buf.readBytes(destination, available, delivered, endFlag);
    }
    std::memset(destination + available, 0, length - available);
}

void mixVoiceInto(const uint8_t* voice, uint8_t* destination, uint32_t length,
                  int32_t microphoneGain, int32_t accompanimentGain) {
    for (uint32_t i = 0; i + 1 < length; i += 2) {
        const auto microphone = static_cast<int16_t>(loadLe16(&voice[i]));
        const auto accompaniment = static_cast<int16_t>(loadLe16(&destination[i]));
        storeLe16(&destination[i],
                  static_cast<uint16_t>(
                      mixSample(microphone, accompaniment, microphoneGain, accompanimentGain)));
    }
}

void SyncMx::addInto(uint8_t* destination, uint32_t length) const {
    mixVoiceInto(pBuf_.get(), destination, length, microphoneGain_, accompanimentGain_);
}

int SyncMx::mixBlock(uint8_t* destination, uint32_t& length, uint32_t& endFlag) {
    currentDelay_ = wholeFrames(measuredDelay());
    if (!aligned_) {
        align(currentDelay_);
    }
    if (!aligned_) {
        return 0;
    }
    length = nextBlockLength();
    if (length == 0) {
        return 0;
    }
    readMicrophone(length);
    readAccompaniment(destination, length, endFlag);
    addInto(destination, length);
    if (voiceEnded_ && lastBlockLength() == 0) {
        endFlag = 1;
    }
    return 1;
}

void SyncMx::free() {
    P1Buf.release();
    P2Buf.release();
    pBuf_.reset();
    input_ = nullptr;
    aligned_ = 0;
    leadSilence_ = 0;
    voiceEnded_ = false;
    accompanimentEnded_ = false;
}

}  // namespace tunebox
