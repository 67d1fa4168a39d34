#include "capture/sync_mx.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/diagnostic_log.h"
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
// Less than this between the delay the mix follows and the one measured is
// left alone (jitter of the positions, slow drift); 1.5 ms.
constexpr int64_t kFollowStep = 66 * kNativeFrameBytes;
// What a take that lines up is allowed to be off by: 2 ms.
constexpr int64_t kInSyncLimit = 88 * kNativeFrameBytes;
// How long, in bytes captured, a change no stall explains must stand before
// it is taken. A sound server that was held up for a moment stops both
// streams alike, so nothing heard moves apart, but its timing reports catch
// up with each stream at its own time: for up to a second the positions
// disagree by as much as the hold-up lasted, then agree again.
constexpr uint32_t kChangeMustLast = 2 * kNativeBytesPerSecond;
// A change held back longer than this is taken even while it still moves
// (clocks that drift apart), long before the voice ring (15 s) fills.
constexpr uint32_t kLongestHold = 6 * kNativeBytesPerSecond;

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
    accompanimentGaps_.clear();
    accompanimentQueued_ = accompanimentMixed_ = takeBytes_ = 0;
    lastPlayed_ = playedBefore_ = lastCaptured_ = 0;
    following_ = true;
    held_.reset();
    stallsSeen_ = stallsFollowed_ = 0;
    stallAt_.reset();
    outOfSyncFrom_.reset();
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
    if (P2Buf.put(bytes, length, endFlag)) {
        accompanimentQueued_ += length;
        accompanimentEnded_ = accompanimentEnded_ || endFlag == 1;
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
            following_ = false;
            return currentDelay_;
        }
        lastPlayed_ = played;
        lastCaptured_ = after;
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
            alignedDelay_ = followedDelay_ = delay;
            logReading("aligned", delay);
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
    alignedDelay_ = followedDelay_ = delay;
    logReading("aligned", delay);
}

// After the alignment the delay keeps being measured at every block. When
// the output stalls (it ran dry, or its converter stopped) while the capture
// runs on, the delay grows by the stall's length: the singer heard nothing
// for that long. The accompaniment gets as much silence where the device
// says it stopped, so the take holds what was heard and the voice after the
// stall lines up again. A change that no stall explains (one the device did
// not see, a capture that stood still, clocks that drift apart) is held back
// until it has lasted (see holdsBack), then taken at the block about to be
// mixed: silence in the accompaniment for a growing delay, before the voice
// for a shrinking one. Where such a change
// is more than a take may be off by, part of the take before it was out of
// sync: the first such moment is kept for the singer.
bool SyncMx::followDevices(int32_t delay) {
    if (manualFlag_ || !following_ || voiceEnded_ || playback_ == nullptr) {
        return true;
    }
    noteStalls();
    // The song has played out: its output stands at the end, no stall.
    if (accompanimentEnded_ && lastPlayed_ >= accompanimentQueued_) {
        following_ = false;
        return true;
    }
    const bool standing = lastPlayed_ == playedBefore_;
    playedBefore_ = lastPlayed_;
    const int64_t change = int64_t{delay} - followedDelay_;
    if (std::abs(change) < kFollowStep) {
        held_.reset();
        stallsFollowed_ = stallsSeen_;
        return true;
    }
    if (change > 0 && stallAt_ && *stallAt_ >= accompanimentMixed_) {
        oweAccompanimentSilence(*stallAt_, static_cast<uint32_t>(change));
        logReading("placed at the stall", delay);
        // Several stalls since the last reading share one change, and how it
        // splits between them is not known: all of it goes to the first, so
        // the stretch up to the last one is off by the later ones' length.
        if (stallsSeen_ - stallsFollowed_ > 1 && change > kInSyncLimit && !outOfSyncFrom_) {
            outOfSyncFrom_ = takeBytes_;
        }
    } else if (holdsBack(delay, standing)) {
        logReading("held", delay);
        return false;
    } else {
        logReading("applied here", delay);
        if (change > 0) {
            oweAccompanimentSilence(accompanimentMixed_, static_cast<uint32_t>(change));
        } else {
            leadSilence_ += static_cast<uint32_t>(-change);
        }
        if (std::abs(change) > kInSyncLimit && !outOfSyncFrom_) {
            outOfSyncFrom_ = takeBytes_;
        }
    }
    held_.reset();
    stallsFollowed_ = stallsSeen_;
    followedDelay_ = delay;
    return true;
}

// A change is held back until it has stood, within what a take may be off
// by, for kChangeMustLast of capture, and while the output stands still
// (where it stopped may yet be told); never beyond kLongestHold.
bool SyncMx::holdsBack(int32_t delay, bool standing) {
    if (!held_) {
        held_ = HeldChange{delay, lastCaptured_, lastCaptured_, takeBytes_};
    } else if (std::abs(int64_t{delay} - held_->delay) > kInSyncLimit) {
        held_->delay = delay;
        held_->since = lastCaptured_;
    }
    if (lastCaptured_ - held_->first >= kLongestHold) {
        return false;
    }
    return standing || lastCaptured_ - held_->since < kChangeMustLast;
}

// A change still held back when the take ended was never taken: from where
// it was first seen, the rest of the take is off by it.
std::optional<uint64_t> SyncMx::outOfSyncFrom() const {
    if (!outOfSyncFrom_ && held_ &&
        std::abs(int64_t{held_->delay} - followedDelay_) > kInSyncLimit) {
        return held_->takeAt;
    }
    return outOfSyncFrom_;
}

// One line in the diagnostic log (when it is switched on) per reading that
// moves the delay: enough to tell afterwards why a take was corrected.
void SyncMx::logReading(const char* verdict, int32_t delay) const {
    char line[kLogMessageBytes];
    std::snprintf(line, sizeof line,
                  "SyncMx %s: delay %" PRId32 " (was %" PRId32 "), played %" PRIu32
                  ", captured %" PRIu32 ", stalls %" PRIu32 " last at %" PRIu64 ", mixed %" PRIu64
                  ", take %" PRIu64,
                  verdict, delay, followedDelay_, lastPlayed_, lastCaptured_, stallsSeen_,
                  stallAt_.value_or(0), accompanimentMixed_, takeBytes_);
    logIfEnabled(line);
}

// The first stall not seen before is where a growing delay belongs; later
// ones in the same stretch between two readings are counted with it.
void SyncMx::noteStalls() {
    const OutputStalls stalls = playback_->deviceStalls(stallsSeen_);
    if (stalls.count > stallsSeen_) {
        stallAt_ = stalls.position;
        stallsSeen_ = stalls.count;
    }
}

void SyncMx::oweAccompanimentSilence(uint64_t at, uint32_t bytes) {
    auto place = std::find_if(accompanimentGaps_.begin(), accompanimentGaps_.end(),
                              [at](const Gap& gap) { return gap.at >= at; });
    if (place != accompanimentGaps_.end() && place->at == at) {
        place->bytes += bytes;
    } else {
        accompanimentGaps_.insert(place, {at, bytes});
    }
}

// Bytes of P2Buf the next `length` bytes of the take take, the owed silence
// aside.
uint64_t SyncMx::accompanimentNeeded(uint32_t length) const {
    uint64_t needed = 0;
    uint64_t position = accompanimentMixed_;
    uint64_t left = length;
    for (const Gap& gap : accompanimentGaps_) {
        const uint64_t before = std::min(left, gap.at - position);
        needed += before;
        position += before;
        left -= before + std::min<uint64_t>(left - before, gap.bytes);
        if (left == 0) {
            break;
        }
    }
    return needed + left;
}

int SyncMx::bothHaveABlock() const {
    const uint32_t voiceNeeded = blockSize_ - std::min(leadSilence_, blockSize_);
    const uint64_t accompanimentNeeded = this->accompanimentNeeded(blockSize_);
    return (voiceNeeded == 0 || P1Buf.hasBytes(voiceNeeded)) &&
           (accompanimentNeeded == 0 || P2Buf.hasBytes(static_cast<uint32_t>(accompanimentNeeded)));
}

// Once the voice has ended nothing more arrives, so nothing is waited for:
// the rest of the voice (whole frames, at most a block) goes out, cut
// shorter only where an accompaniment that has ended stops first.
uint32_t SyncMx::lastBlockLength() const {
    uint64_t length = std::min<uint64_t>(uint64_t{leadSilence_} + P1Buf.queuedBytes(), blockSize_);
    if (accompanimentEnded_) {
        uint64_t owed = 0;
        for (const Gap& gap : accompanimentGaps_) {
            owed += gap.bytes;
        }
        length = std::min(length, P2Buf.queuedBytes() + owed);
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

// The accompaniment as heard: its bytes with the owed silence in place,
// then silence where it has ended.
void SyncMx::readAccompaniment(uint8_t* destination, uint32_t length, uint32_t& endFlag) {
    endFlag = 0;
    uint32_t filled = 0;
    while (filled < length) {
        const uint32_t room = length - filled;
        if (!accompanimentGaps_.empty() && accompanimentGaps_.front().at <= accompanimentMixed_) {
            Gap& gap = accompanimentGaps_.front();
            const uint32_t silence = std::min(gap.bytes, room);
            std::memset(destination + filled, 0, silence);
            filled += silence;
            gap.bytes -= silence;
            if (gap.bytes == 0) {
                accompanimentGaps_.pop_front();
            }
            continue;
        }
        uint64_t wanted = room;
        if (!accompanimentGaps_.empty()) {
            wanted = std::min(wanted, accompanimentGaps_.front().at - accompanimentMixed_);
        }
        const auto count = static_cast<uint32_t>(std::min(wanted, P2Buf.queuedBytes()));
        uint32_t delivered = 0;
        if (count == 0 || !P2Buf.readBytes(destination + filled, count, delivered, endFlag)) {
            break;
        }
        accompanimentMixed_ += count;
        filled += count;
    }
    std::memset(destination + filled, 0, length - filled);
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
    } else if (!followDevices(currentDelay_)) {
        return 0;
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
    takeBytes_ += length;
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
