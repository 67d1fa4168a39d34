// The player's source side: opening the accompaniment, filling the ring from
// it (effects applied on the way), and moving it by seek and step.

#include "playback/wave_ctl.h"

#include <algorithm>
#include <cstddef>

#include "core/playback_clock.h"
#include "effects/effect_chain.h"
#include "playback/source_opener.h"

namespace tunebox {
namespace {

constexpr uint32_t kStepBytes = kNativeBytesPerSecond;  // one second
// A singer moving the controls through a song; more only costs an allocation.
constexpr std::size_t kExpectedKeyTempoChanges = 256;

uint32_t permyriadOf(uint32_t position, uint32_t length) {
    return length == 0 ? 0 : static_cast<uint32_t>(uint64_t{position} * kSliderRange / length);
}

// The stage's input: the player's source, up to the length to play.
class SourceInput final : public StageInput {
  public:
    SourceInput(AudioSource* source, uint32_t remaining) : source_(source), remaining_(remaining) {}

    uint32_t readFrames(int16_t* into, uint32_t frames, bool& ended) override {
        if (source_ == nullptr || consumed_ >= remaining_) {
            ended = true;
            return 0;
        }
        const uint32_t wanted = std::min(frames * kNativeFrameBytes, remaining_ - consumed_);
        const SourceBlock block = source_->read(reinterpret_cast<uint8_t*>(into), wanted);
        consumed_ += block.count;
        ended = block.ended || consumed_ >= remaining_;
        return block.count / kNativeFrameBytes;
    }

    uint32_t consumed() const { return consumed_; }

  private:
    AudioSource* const source_;
    const uint32_t remaining_;
    uint32_t consumed_ = 0;
};

}  // namespace

void WaveCtl::setSourceOptions(const SourceOptions& options) {
    std::lock_guard guard(lock_);
    sourceOptions_ = options;
}

int WaveCtl::wavOpenFile(const std::string& path, uint32_t start, uint32_t length) {
    std::lock_guard guard(lock_);
    blocksFilled_ = 0;
    keyTempoChanges_.clear();
    // Room for a take's worth of changes before audio flows.
    keyTempoChanges_.reserve(kExpectedKeyTempoChanges);
    source_ = wavOpenSource(path, sourceOptions_).source;
    if (!source_) {
        return 0;
    }
    const uint32_t openedLength = source_->length();
    readPosition_ = adjustStartPosition(start);
    seekPosition_ = readPosition_;
    if (start != 0) {
        // A start beyond the file seeks a converted source to its end.
        const double fraction =
            openedLength == 0 ? 0.0 : double(readPosition_) / openedLength * kSliderRange;
        seekSource(readPosition_, static_cast<uint32_t>(std::min(fraction, double(kSliderRange))));
    }
    length_ = length;
    startSourceRun();
    prefill();
    fileSource_ = 1;
    return 1;
}

uint32_t WaveCtl::nextIndex(uint32_t index) const {
    return index + 1 < static_cast<uint32_t>(bufferCount_) ? index + 1 : 0;
}

// One slot always stays empty, so the filled count never reaches the
// buffer count and full and empty are told apart by the indexes alone.
bool WaveCtl::slotFree() const {
    return nextIndex(writeIndex_) != readIndex_;
}

uint32_t WaveCtl::filledCount() {
    std::lock_guard guard(lock_);
    if (bufferCount_ == 0) {
        return 0;
    }
    const auto count = static_cast<uint32_t>(bufferCount_);
    return (writeIndex_ + count - readIndex_) % count;
}

// The stage's history and the song clock belong to the place the source
// stood: a new place (open, seek) starts them afresh.
void WaveCtl::startSourceRun() {
    songClock_.startRun();
    stageDraining_ = false;
    stageInUse_ = keyTempo_ && !keyTempoWanted_.neutral();
    if (stageInUse_) {
        keyTempo_->set(keyTempoWanted_);
        keyTempo_->start();
    }
}

// A slot holds the stage's output and whatever that took, up to the length,
// with the stage's tail played out before the end; without the stage it
// holds exactly the bytes read, as far as the source goes. On the way back
// to neutral the stage's tail comes first and the source goes on right
// after it, in the same slot, so the sound has no gap.
WaveCtl::SlotRead WaveCtl::readIntoSlot(WaveBuf& slot) {
    ctl_.playRange[kBlockPosition] = readPosition_;
    SlotRead read;
    if (stageDraining_) {
        const StageOutput tail = keyTempo_->finish(reinterpret_cast<int16_t*>(slot.block.get()),
                                                   bufferSize_ / kNativeFrameBytes);
        read.count = read.tailBytes = tail.frames * kNativeFrameBytes;
        if (tail.ended) {
            stageDraining_ = false;
            if (!keyTempoWanted_.neutral()) {
                keyTempo_->set(keyTempoWanted_);
                keyTempo_->startFromPlain();
                stageInUse_ = true;
            }
        }
        read.ended = tail.ended && readPosition_ >= length_ ? 1 : 0;
        read.viaStage = read.ended == 1;
    }
    if (read.count < bufferSize_ && read.ended == 0) {
        uint8_t* const rest = slot.block.get() + read.count;
        const uint32_t room = bufferSize_ - read.count;
        const SlotRead more =
            stageInUse_ ? readThroughStage(rest, room) : readFromSource(rest, room);
        read = {read.count + more.count, more.consumed,  more.ended,
                more.viaStage,           read.tailBytes, more.tempoPercent};
    }
    fltEffectChain(ctl_, reinterpret_cast<int16_t*>(slot.block.get()), read.count);
    return read;
}

WaveCtl::SlotRead WaveCtl::readThroughStage(uint8_t* into, uint32_t bytes) {
    SourceInput input(source_.get(), length_ > readPosition_ ? length_ - readPosition_ : 0);
    const StageOutput output =
        keyTempo_->render(input, reinterpret_cast<int16_t*>(into), bytes / kNativeFrameBytes);
    return {.count = output.frames * kNativeFrameBytes,
            .consumed = input.consumed(),
            .ended = output.ended ? 1u : 0u,
            .viaStage = true,
            .tempoPercent = keyTempo_->settings().tempoPercent};
}

WaveCtl::SlotRead WaveCtl::readFromSource(uint8_t* into, uint32_t bytes) {
    if (!source_) {
        return {.ended = 1};
    }
    const SourceBlock block = source_->read(into, bytes);
    const bool reachedLength = uint64_t{readPosition_} + block.count >= length_;
    return {.count = block.count,
            .consumed = block.count,
            .ended = block.ended || reachedLength ? 1u : 0u};
}

int WaveCtl::prefill() {
    std::lock_guard guard(lock_);
    if (readPosition_ >= length_ || !slotFree()) {
        return 0;
    }
    uint32_t last = 0;
    do {
        const SlotRead read = readIntoSlot(waveBuf_[writeIndex_]);
        last = read.ended;
        readPosition_ += read.consumed;
        if (!commit(read, read.count, last)) {
            break;
        }
    } while (slotFree() && readPosition_ < length_ && last == 0);
    return 1;
}

int WaveCtl::fillOne() {
    std::lock_guard guard(lock_);
    return device_ ? fillNext() : 0;
}

int WaveCtl::wavRenderNext() {
    std::lock_guard guard(lock_);
    if (device_ || bufferCount_ == 0) {
        return 0;
    }
    readIndex_ = writeIndex_;
    return fillNext();
}

int WaveCtl::fillNext() {
    if (!slotFree()) {
        return 0;
    }
    const SlotRead read = readIntoSlot(waveBuf_[writeIndex_]);
    readPosition_ += read.consumed;
    uint32_t count = read.count;
    uint32_t last = read.ended;
    // The stage holds the source's end back behind its own delay: its last
    // block, which says so, plays like any other.
    const bool atEnd =
        read.viaStage ? last == 0 && rangeEndReached(ctl_.playRange, ctl_.playRange[kBlockPosition])
                      : wavIsAtEnd(readPosition_, length_, ctl_.playRange,
                                   ctl_.playRange[kBlockPosition]) == 1;
    if (atEnd) {
        // The block that reaches the end is not played: the end is cut at
        // buffer granularity, before the stop position rather than after it.
        last = 1;
        count = 0;
    }
    return commit(read, count, last);
}

// The song clock notes what the device is given, at the tempo it was made.
int WaveCtl::commit(const SlotRead& read, uint32_t count, uint32_t last) {
    if (!slotFree()) {
        return 0;
    }
    WaveBuf& slot = waveBuf_[writeIndex_];
    if (observer_ != nullptr) {
        observer_->onBlock(slot.block.get(), count, last);
    }
    // Done and nothing else: the slot is unprepared until it is written.
    slot.pwh.flags = kWaveHeaderDone;
    slot.pwh.bufferLength = count;
    slot.lastFlag = last;
    writeIndex_ = nextIndex(writeIndex_);
    ++blocksFilled_;
    const uint32_t tail = std::min(read.tailBytes, count);
    songClock_.addBlock(tail, kFullTempo);
    songClock_.addBlock(count - tail, read.tempoPercent);
    return 1;
}

WaveBuf* WaveCtl::takeFilled() {
    if (readIndex_ == writeIndex_) {
        return nullptr;
    }
    WaveBuf& slot = waveBuf_[readIndex_];
    endOfSource_ = slot.lastFlag;
    readIndex_ = nextIndex(readIndex_);
    return &slot;
}

void WaveCtl::wavSeekSlider(uint32_t slider) {
    if (state_ == kPlayerStopped) {
        return;
    }
    bool reachedEnd = false;
    {
        std::lock_guard guard(lock_);
        const uint32_t position = sliderToPosition(slider, length_);
        if (wavIsAtEnd(position, length_, ctl_.playRange, ctl_.playRange[kBlockPosition])) {
            readPosition_ = length_;
            endOfSource_ = 1;
            reachedEnd = true;
        } else {
            readPosition_ = position;
            seekSource(readPosition_, slider);
        }
    }
    if (reachedEnd) {
        wavStop();
    } else if (state_ == kPlayerPaused) {
        wavPause(0);
        restart();
        wavPause(1);
    } else {
        restart();
    }
}

void WaveCtl::seekSource(uint32_t position, uint32_t permyriad) {
    // A seek that fails leaves the source where it was; the reads go on.
    if (source_) {
        static_cast<void>(source_->seek(position, permyriad));
    }
}

void WaveCtl::wavStepBack() {
    std::lock_guard guard(lock_);
    readPosition_ = readPosition_ > kStepBytes ? readPosition_ - kStepBytes : 0;
    if (readPosition_ != 0) {
        seekSource(readPosition_, permyriadOf(readPosition_, length_));
    }
}

void WaveCtl::wavStepForward() {
    {
        std::lock_guard guard(lock_);
        const uint64_t next = uint64_t{readPosition_} + kStepBytes;
        if (next < length_) {
            readPosition_ = static_cast<uint32_t>(next);
            seekSource(readPosition_, permyriadOf(readPosition_, length_));
            return;
        }
        readPosition_ = length_;
        endOfSource_ = 1;
    }
    wavStop();
}

}  // namespace tunebox
