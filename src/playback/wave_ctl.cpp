#include "playback/wave_ctl.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>

#include "core/diagnostic_log.h"
#include "core/heap.h"
#include "core/playback_clock.h"
#include "effects/effect_chain.h"
#include "platform/audio_backend.h"

namespace tunebox {
namespace {

constexpr uint32_t kDefaultBufferCount = 3;
constexpr uint8_t kDefaultSectorsPerRead = 13;
constexpr uint32_t kTickPeriodMs = 200;

// The device position seen by the previous tick after the source's end: one
// value for the whole process, shared by every player, so a player whose
// device stands where another's stood a moment ago stops a tick early.
std::atomic<uint32_t> rememberedDevicePosition{0};

}  // namespace

WaveCtl::~WaveCtl() {
    wavStop();
}

void WaveCtl::wavSetGeometry(uint32_t count, uint8_t sectorsPerRead) {
    wantedCount_ = count;
    sectorsPerRead_ = sectorsPerRead;
    bufferSize_ = sectorsPerRead * count * kSectorBytes;
}

void WaveCtl::wavInit(const PlayerSettings& settings) {
    if (wantedCount_ == 0) {
        wavSetGeometry(kDefaultBufferCount, kDefaultSectorsPerRead);
    }
    if (initialised_) {
        wavStop();
    }
    std::lock_guard guard(lock_);
    resetBlock();
    initialised_ = 1;
    fileSource_ = settings.fileSource;
    allocateBuffers();
    outputFormat_ = settings.format;
    bytesPerSecond_ = outputFormat_.avgBytesPerSec;
    ctl_.blockSize = fileSource_ == 1 ? bufferSize_ : kDefaultSectorsPerRead * kSectorBytes;
    ctl_.level = settings.level;
    ctl_.centreRemovalFlag = settings.centreRemovalFlag;
    ctl_.reverbFlag = settings.reverbFlag;
    ctl_.equaliserFlag = settings.equaliserFlag;
    ctl_.levelFlag = settings.levelFlag;
    ctl_.playRange = settings.playRange;
    fltEqualizerInit(ctl_, settings.bands, static_cast<int>(outputFormat_.samplesPerSec));
    keyTempoWanted_ = settings.keyTempo;
    if (!settings.keyTempo.neutral() || settings.keyTempoMayMove) {
        keyTempo_ = std::make_unique<KeyTempoStage>(settings.keyTempo, outputFormat_.samplesPerSec);
    }
}

void WaveCtl::releaseResources() {
    source_.reset();
    for (WaveBuf& slot : waveBuf_) {
        slot = WaveBuf{};
    }
    bufferCount_ = 0;
    fltEqualizerFree(ctl_);
    keyTempo_.reset();
    stageInUse_ = stageDraining_ = false;
}

void WaveCtl::resetBlock() {
    releaseResources();
    ctl_ = EffectControl{};
    endOfSource_ = 0;
    drained_ = 0;
    outstanding_ = 0;
    outstandingTarget_ = 0;
    state_ = kPlayerStopped;
    writeIndex_ = readIndex_ = 0;
    runStartPosition_ = seekPosition_ = readPosition_ = 0;
    length_ = 0;
    baseSeconds_ = 0;
    keyTempoWanted_ = KeyTempo{};
    blocksFilled_ = 0;
    keyTempoChanges_.clear();
    songClock_.startRun();
}

// A failed block leaves the player with the buffers it got: with fewer than
// two no slot is ever free and nothing plays, but nothing breaks either.
void WaveCtl::allocateBuffers() {
    const auto wanted = static_cast<int32_t>(std::min<uint32_t>(wantedCount_, kMaxWaveBufs));
    for (int32_t i = 0; i < wanted; ++i) {
        WaveBuf& slot = waveBuf_[i];
        slot.block = heapAllocZeroed<uint8_t>(bufferSize_);
        if (!slot.block) {
            logAlways("ﾒﾓﾘ確保失敗:wavInit→WaveCtl.WaveBuf[i].pwh.lpData");
            return;
        }
        slot.pwh.data = slot.block.get();
        slot.pwh.bufferLength = bufferSize_;
        ++bufferCount_;
    }
}

void WaveCtl::writeSlot(WaveBuf& slot) {
    device_->prepare(slot.pwh);
    const AudioResult result = device_->write(slot.pwh);
    if (result != kAudioOk) {
        logAlways("st=" + std::to_string(result));
    }
}

int WaveCtl::wavPlay() {
    std::lock_guard guard(lock_);
    if (!initialised_ || device_) {
        return 0;
    }
    openDevice();
    if (!device_) {
        return 0;
    }
    runStartPosition_ = seekPosition_;
    device_->pause();
    endOfSource_ = 0;
    const auto filled = static_cast<int32_t>(filledCount());
    outstanding_ = filled;
    outstandingTarget_ = filled;
    for (int32_t i = 0; i < bufferCount_ && endOfSource_ == 0; ++i) {
        WaveBuf* slot = takeFilled();
        if (slot == nullptr) {
            break;
        }
        writeSlot(*slot);
    }
    baseSeconds_ = 0;
    drained_ = 0;
    state_ = kPlayerPlaying;
    device_->restart();
    startTimer();
    return 1;
}

void WaveCtl::openDevice() {
    // No other part of the program plays system sounds, so nothing has to be
    // silenced before the device is taken.
    auto device = backend_.makeOutput();
    const AudioResult result = device->open(outputFormat_, [this](WaveHeader&) { onBufferDone(); });
    if (result != kAudioOk) {
        lastDeviceError_ = device->lastError();
        return;
    }
    device_ = std::move(device);
}

void WaveCtl::closeDevice() {
    if (!device_) {
        return;
    }
    device_->pause();
    device_->reset();
    // The buffers come back on the device's thread; each is released only
    // once it is there.
    for (int32_t i = 0; i < bufferCount_; ++i) {
        while (device_->unprepare(waveBuf_[i].pwh) == kAudioStillPlaying) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    device_->close();
    device_.reset();
}

void WaveCtl::onBufferDone() {
    const int32_t left = outstanding_.fetch_sub(1) - 1;
    if (endOfSource_ == 1 && left < 1) {
        drained_ = 1;
    }
}

void WaveCtl::startTimer() {
    TimerService& timers = backend_.timers();
    TimerCaps caps;
    if (timers.getDevCaps(caps) != 1) {
        return;
    }
    timerPeriod_ = std::max(kTickPeriodMs, caps.periodMin);
    timers.beginPeriod(timerPeriod_);
    timerId_ = timers.setEvent(timerPeriod_, timerPeriod_, [this] { tick(); });
    if (timerId_ == 0) {
        timers.endPeriod(timerPeriod_);
    }
}

// Whoever takes the id kills the event: the owner's thread waits for a
// running tick to finish, the tick's own thread only marks it the last.
void WaveCtl::stopTimer() {
    const uint32_t id = timerId_.exchange(0);
    if (id == 0) {
        return;
    }
    TimerService& timers = backend_.timers();
    timers.killEvent(id);
    timers.endPeriod(timerPeriod_);
}

// The device is only opened or closed here, or while no tick can run, so the
// tick may look at it before taking the lock.
void WaveCtl::tick() {
    if (!device_) {
        return;
    }
    if (drained_ == 1) {
        wavStop();
        return;
    }
    if (endOfSource_ == 1) {
        // A device that stops handing buffers back still stops moving.
        uint32_t position = 0;
        device_->position(position);
        if (position == rememberedDevicePosition.load()) {
            wavStop();
            return;
        }
        rememberedDevicePosition = position;
    }
    std::lock_guard guard(lock_);
    if (state_ != kPlayerPlaying) {
        return;
    }
    if (outstanding_ <= outstandingTarget_) {
        fillOne();
        if (WaveBuf* slot = takeFilled()) {
            writeSlot(*slot);
            ++outstanding_;
        }
    }
}

void WaveCtl::wavPause(int pause) {
    if (pause == 1) {
        stopTimer();
        std::lock_guard guard(lock_);
        if (device_ && state_ == kPlayerPlaying) {
            device_->pause();
            state_ = kPlayerPaused;
        }
        return;
    }
    std::lock_guard guard(lock_);
    if (device_ && state_ == kPlayerPaused) {
        startTimer();
        device_->restart();
        state_ = kPlayerPlaying;
    }
}

void WaveCtl::wavStop() {
    // Outside the lock: a tick waiting for it would never let the timer's
    // kill return. From the tick itself this only marks the tick the last.
    stopTimer();
    std::lock_guard guard(lock_);
    if (state_ == kPlayerStopped || !initialised_) {
        return;
    }
    state_ = kPlayerStopped;
    closeDevice();
    releaseResources();
    initialised_ = 0;
}

void WaveCtl::restart() {
    if (state_ != kPlayerPlaying) {
        return;
    }
    stopTimer();
    std::lock_guard guard(lock_);
    if (state_ != kPlayerPlaying) {
        return;  // the source ended meanwhile
    }
    closeDevice();
    endOfSource_ = 0;
    outstanding_ = 0;
    writeIndex_ = readIndex_ = 0;
    seekPosition_ = readPosition_;
    startSourceRun();
    prefill();
    wavPlay();
}

int WaveCtl::wavGetTime(uint32_t& minutes, uint32_t& seconds, uint32_t& frames) {
    std::lock_guard guard(lock_);
    if (!device_) {
        return -1;
    }
    const ClockTime time =
        clockTime(runStartPosition_, wavGetSongPosition(), bytesPerSecond_, baseSeconds_);
    minutes = time.minutes;
    seconds = time.seconds;
    frames = time.frames;
    return 1;
}

uint32_t WaveCtl::wavGetSliderPos() {
    std::lock_guard guard(lock_);
    if (state_ == kPlayerStopped) {
        return 0;
    }
    return sliderPosition(runStartPosition_, wavGetSongPosition(), bytesPerSecond_, baseSeconds_,
                          length_);
}

uint32_t WaveCtl::wavGetDevicePosition() {
    std::lock_guard guard(lock_);
    uint32_t position = 0;
    if (device_) {
        device_->position(position);
    }
    return position;
}

OutputStalls WaveCtl::wavGetDeviceStalls(uint32_t first) {
    std::lock_guard guard(lock_);
    return device_ ? device_->stalls(first) : OutputStalls{};
}

uint32_t WaveCtl::wavGetSongPosition() {
    std::lock_guard guard(lock_);
    return songClock_.songBytes(wavGetDevicePosition());
}

int WaveCtl::wavIsStopped() const {
    return state_ == kPlayerStopped ? 1 : 0;
}

int WaveCtl::wavIsAtEnd(uint32_t position, uint32_t limit, const PlayRange& range,
                        uint32_t positionAtFill) const {
    if (position >= limit) {
        return 1;
    }
    return rangeEndReached(range, positionAtFill) ? 1 : 0;
}

bool WaveCtl::rangeEndReached(const PlayRange& range, uint32_t positionAtFill) const {
    return fileSource_ == 1 && range[kEnvelopeEnable] != 0 && range[kRangeEnd] <= positionAtFill;
}

template <class Change>
void WaveCtl::whileRunning(Change change) {
    std::lock_guard guard(lock_);
    if (state_ != kPlayerStopped && initialised_) {
        change();
    }
}

void WaveCtl::wavSetBand(int band, int gain) {
    if (band < 0 || band >= kBandCount) {
        return;
    }
    whileRunning([&] {
        fltEqualizerSetBand(ctl_, band, gain, static_cast<int>(outputFormat_.samplesPerSec));
    });
}

void WaveCtl::wavSetLevel(int32_t p0) {
    whileRunning([&] { ctl_.level = p0; });
}

void WaveCtl::wavSetEqualiserFlag(int32_t p3) {
    whileRunning([&] { ctl_.equaliserFlag = p3; });
}

void WaveCtl::setReverb(void (*setter)(Reverb&, float), int32_t tenths) {
    setter(ctl_.reverb, static_cast<float>(tenths / 10.0));
}

void WaveCtl::wavSetRoomSize(int32_t tenths) {
    std::lock_guard guard(lock_);
    if (initialised_) {
        setReverb(reverb_set_room_size, tenths);
    }
}

void WaveCtl::wavSetDamping(int32_t tenths) {
    whileRunning([&] { setReverb(reverb_set_damping, tenths); });
}

void WaveCtl::wavSetWidth(int32_t tenths) {
    whileRunning([&] { setReverb(reverb_set_width, tenths); });
}

void WaveCtl::wavSetPlayRange(const PlayRange& range) {
    whileRunning([&] {
        const uint32_t blockPosition = ctl_.playRange[kBlockPosition];
        ctl_.playRange = range;
        ctl_.playRange[kBlockPosition] = blockPosition;
    });
}

// The stage is started afresh only where the source stands and nothing of
// it is held back; a tail still playing out keeps its neutral settings and
// the new ones wait for it. Each change is noted with the block it applies
// from: given again at the same place it makes the same blocks, which is how
// a take is mixed again.
void WaveCtl::wavSetKeyTempo(const KeyTempo& keyTempo) {
    std::lock_guard guard(lock_);
    if (!initialised_ || !keyTempo_) {
        return;
    }
    keyTempoChanges_.push_back({blocksFilled_, keyTempo});
    keyTempoWanted_ = keyTempo;
    if (stageDraining_) {
        return;
    }
    if (keyTempo.neutral()) {
        if (stageInUse_) {
            keyTempo_->set(keyTempo);
            stageInUse_ = false;
            stageDraining_ = true;
        }
        return;
    }
    keyTempo_->set(keyTempo);
    if (!stageInUse_) {
        keyTempo_->startFromPlain();
        stageInUse_ = true;
    }
}

KeyTempo WaveCtl::wavGetKeyTempo() const {
    std::lock_guard guard(lock_);
    return keyTempo_ ? keyTempoWanted_ : KeyTempo{};
}

KeyTempoChanges WaveCtl::wavGetKeyTempoChanges() const {
    std::lock_guard guard(lock_);
    return keyTempoChanges_;
}

int WaveCtl::wavHasOutputDevice() const {
    return backend_.outputDeviceCount() >= 1 ? 1 : 0;
}

std::string WaveCtl::lastDeviceError() const {
    std::lock_guard guard(lock_);
    return lastDeviceError_;
}

}  // namespace tunebox
