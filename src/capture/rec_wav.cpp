#include "capture/rec_wav.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

#include "core/diagnostic_log.h"
#include "core/heap.h"
#include "core/little_endian.h"
#include "effects/effect_chain.h"

namespace tunebox {

struct CaptureInbox {
    CRecWav* engine;  // null once the run that posted here has closed
};

namespace {

std::atomic<uint32_t> handledNotices{0};

constexpr int kFlatBand = 24;
constexpr int kUnprepareTries = 100;

int32_t peakOf(const uint8_t* block, uint32_t length, uint32_t channel) {
    int32_t peak = 0;
    for (uint32_t i = channel * 2; i + 1 < length; i += kNativeFrameBytes) {
        const int32_t sample = static_cast<int16_t>(loadLe16(block + i));
        peak = std::max(peak, std::min(sample < 0 ? -sample : sample, int32_t{32767}));
    }
    return peak;
}

// Full scale is where the mix clips (mixSample) and where a microphone's
// converter saturates.
bool reachesFullScale(const uint8_t* block, uint32_t length) {
    constexpr int32_t kFullScale = 32767;
    return peakOf(block, length, 0) >= kFullScale || peakOf(block, length, 1) >= kFullScale;
}

}  // namespace

uint32_t handledCaptureNotices() {
    return handledNotices.load(std::memory_order_relaxed);
}

CRecWav::CRecWav(Dispatcher& dispatcher, AudioBackend& backend)
    : dispatcher_(dispatcher), backend_(backend), watchdog_(backend.timers(), backend.clock()) {}

CRecWav::~CRecWav() {
    close();
}

void CRecWav::registerLevelMeter(LevelMeterCallback callback, void* context) {
    levelMeter_ = callback;
    levelMeterContext_ = context;
}

void CRecWav::registerFaultNotice(FaultNoticeCallback callback, void* context) {
    faultNotice_ = callback;
    faultNoticeContext_ = context;
}

void CRecWav::registerClipNotice(ClipNoticeCallback callback, void* context) {
    clipNotice_ = callback;
    clipNoticeContext_ = context;
}

void CRecWav::setVoiceFile(std::string path, AccompanimentNote note) {
    voiceFileName_ = std::move(path);
    voiceNote_ = std::move(note);
}

int CRecWav::startRecording(const WaveFormat& format, uint32_t slotSize, int32_t bufferCount,
                            PlaybackFeed* playback, int32_t manualFlag, int32_t manualDelay) {
    return start(kSinkWavFile, format, slotSize, bufferCount, playback, manualFlag, manualDelay);
}

int CRecWav::startLevelMonitor(const WaveFormat& format, uint32_t slotSize, int32_t bufferCount,
                               PlaybackFeed* playback, int32_t manualFlag, int32_t manualDelay) {
    return start(kSinkDiscard, format, slotSize, bufferCount, playback, manualFlag, manualDelay);
}

int CRecWav::start(SinkMode mode, const WaveFormat& format, uint32_t slotSize, int32_t bufferCount,
                   PlaybackFeed* playback, int32_t manualFlag, int32_t manualDelay) {
    if (state_ != kRecClosed) {
        return 0;
    }
    fault_ = CaptureFault::kNone;
    lastError_.clear();
    voiceError_.clear();
    clippedBlocks_ = 0;
    inbox_ = std::make_shared<CaptureInbox>(CaptureInbox{this});
    if (!RecBuf.allocate(slotSize, bufferCount)) {
        return failStart("out of memory for the capture buffers");
    }
    cpybuf_ = heapAllocZeroed<uint8_t>(slotSize);
    if (!cpybuf_) {
        logAlways("ﾒﾓﾘ確保失敗:RecBuf.cpybuf");
        return failStart("out of memory for the capture buffers");
    }
    format_ = format;
    if (!syncMx_.allocate(slotSize, slotSize, manualDelay, playback, manualFlag)) {
        return failStart("out of memory for the mixer");
    }
    if (!openInput()) {
        return failStart("no microphone: " + device_->lastError());
    }
    syncMx_.setInputDevice(device_.get());
    sink_.setMode(mode);
    if (!sink_.open(outputFileName_)) {
        return failStart(outputFileName_ + ": cannot be created");
    }
    if (!openVoiceFile(mode, playback)) {
        return failStart(voiceFileName_ + ": cannot be created");
    }
    if (!initialiseEffects(slotSize)) {
        return failStart("out of memory for the echo effect");
    }
    RecBuf.setFilledCount(RecBuf.slotCount());
    if (!queueAll() || device_->start() != kAudioOk) {
        return failStart("the microphone did not start: " + device_->lastError());
    }
    if (!armWatchdog()) {
        return failStart("the microphone cannot be watched: no timer");
    }
    state_ = kRecCapturing;
    playback_ = playback;
    return 1;
}

int CRecWav::failStart(std::string reason) {
    lastError_ = std::move(reason);
    freeAll();
    return 0;
}

// The callback runs on the device's thread and only posts; the notice is
// handled on the owning thread, and only while this run is still open.
int CRecWav::openInput() {
    device_ = backend_.makeInput();
    Dispatcher* dispatcher = &dispatcher_;
    std::shared_ptr<CaptureInbox> inbox = inbox_;
    InputWatchdog* watchdog = &watchdog_;
    const auto onDone = [dispatcher, inbox, watchdog](WaveHeader& header) {
        watchdog->noteDelivery();
        dispatcher->post([inbox, notice = &header] {
            if (inbox->engine != nullptr) {
                inbox->engine->onCaptureDone(*notice);
            }
        });
    };
    return device_->open(format_, onDone) == kAudioOk ? 1 : 0;
}

// The voice file belongs to a take that mixes a voice with an accompaniment;
// the voice alone is already the take.
bool CRecWav::openVoiceFile(SinkMode mode, const PlaybackFeed* playback) {
    const bool wanted = mode == kSinkWavFile && playback != nullptr && !voiceFileName_.empty();
    voiceSink_.setMode(wanted ? kSinkWavFile : kSinkNone);
    if (!wanted) {
        return true;
    }
    const NoteChunk note = encodeAccompanimentNote(voiceNote_);
    return voiceSink_.open(voiceFileName_, &note) == 1;
}

// A silent device is reported like any other fault of the run, on the
// owning thread and only while the run is still open.
bool CRecWav::armWatchdog() {
    Dispatcher* dispatcher = &dispatcher_;
    std::shared_ptr<CaptureInbox> inbox = inbox_;
    return watchdog_.arm([dispatcher, inbox] {
        dispatcher->post([inbox] {
            if (inbox->engine != nullptr) {
                inbox->engine->onInputSilent();
            }
        });
    });
}

void CRecWav::onInputSilent() {
    if (state_ == kRecCapturing) {
        recordFault(CaptureFault::kInputDevice, "the microphone delivered nothing for 2 seconds");
    }
}

// The microphone's chain: no level, no equaliser, the reverb only when the
// echo is on at the start.
int CRecWav::initialiseEffects(uint32_t slotSize) {
    micCtl_.level = 100;
    micCtl_.centreRemovalFlag = 0;
    micCtl_.reverbFlag = effectsEnabled_;
    micCtl_.equaliserFlag = 0;
    micCtl_.levelFlag = 0;
    micCtl_.playRange = PlayRange{};
    micCtl_.blockSize = slotSize;
    BandValues flat;
    flat.fill(kFlatBand);
    if (!fltEqualizerInit(micCtl_, flat, kNativeSampleRate)) {
        return 0;
    }
    effectsReady_ = 1;
    return 1;
}

int CRecWav::queueAll() {
    for (int32_t i = 0; i < RecBuf.slotCount(); ++i) {
        WaveHeader& header = RecBuf.ling[i].whdr;
        header.bufferLength = RecBuf.slotSize();
        header.flags = 0;
        if (device_->prepare(header) != kAudioOk || device_->addBuffer(header) != kAudioOk) {
            return 0;
        }
    }
    queued_ = RecBuf.slotCount();
    return 1;
}

// A buffer that comes back short (a stop, a device that went away) is
// passed on at the length it holds, in whole frames: silence after it would
// lengthen the take past the moment the singer stopped.
void CRecWav::onCaptureDone(WaveHeader& header) {
    const uint32_t slotSize = RecBuf.slotSize();
    const uint32_t recorded = std::min(header.bytesRecorded, slotSize);
    const uint32_t length =
        recorded == slotSize ? slotSize : recorded / kNativeFrameBytes * kNativeFrameBytes;
    uint32_t endFlag = 0;
    if (state_ == kRecStopping || state_ == kRecClosed) {
        --pending_;
        endFlag = pending_ < 1 ? 1 : 0;
    }
    RecBuf.put(&header, length, endFlag);
    pump();
    handledNotices.fetch_add(1, std::memory_order_relaxed);
}

void CRecWav::pump() {
    if (!pumpVoice() || playback_ == nullptr) {
        return;
    }
    if (mixQueued()) {
        close();
    }
}

// Returns 0 once a block with the end flag has finished the take.
int CRecWav::pumpVoice() {
    RecLingSlot* slot = nullptr;
    while (RecBuf.get(slot)) {
        // An empty buffer (one a stop took back unfilled) holds nothing to hear.
        if (slot->length > 0) {
            passOnVoice(*slot);
        }
        if (state_ == kRecCapturing && slot->header != nullptr) {
            requeue(*slot->header);
        }
        if (slot->endFlag == 1) {
            finishTake();
            return 0;
        }
    }
    return 1;
}

void CRecWav::passOnVoice(RecLingSlot& slot) {
    if (effectsEnabled_ == 1) {
        fltEffectChain(micCtl_, reinterpret_cast<int16_t*>(slot.buf.get()), slot.length);
    }
    reportLevels(slot.buf.get(), slot.length);
    if (playback_ == nullptr) {
        writeToSink(slot.buf.get(), slot.length);
    } else if (!syncMx_.P1_WriteBuf(slot.buf.get(), slot.length, slot.endFlag)) {
        logAlways("ﾊﾞｯﾌｧｵｰﾊﾞｰﾌﾛｰ:SyncMx.P1_WriteBuf");
    }
}

// Mixes every block the two rings allow; true once the mixer has handed out
// the take's last block. Each MixBuf block is copied out before the next
// get, which is what keeps the player from refilling it meanwhile.
bool CRecWav::mixQueued() {
    LingSlot* played = nullptr;
    while (playback_->mixBuf().get(played)) {
        syncMx_.P2_WriteBuf(played->buf.get(), played->length, played->endFlag);
    }
    uint32_t length = 0;
    uint32_t endFlag = 0;
    do {
        if (syncMx_.mixBlock(cpybuf_.get(), length, endFlag) != 1) {
            return false;
        }
        writeToSink(cpybuf_.get(), length);
        writeVoice(syncMx_.voiceBlock(), length);
    } while (endFlag != 1);
    return true;
}

void CRecWav::requeue(WaveHeader& header) {
    unprepareReturned(header);
    header.flags = 0;
    if (device_->prepare(header) != kAudioOk || device_->addBuffer(header) != kAudioOk) {
        --queued_;
        recordFault(CaptureFault::kInputDevice, "the microphone stopped: " + device_->lastError());
    }
}

// A buffer handed back may still be marked in use for a moment.
void CRecWav::unprepareReturned(WaveHeader& header) {
    for (int tries = 0; device_->unprepare(header) == kAudioStillPlaying && tries < kUnprepareTries;
         ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void CRecWav::reportLevels(const uint8_t* block, uint32_t length) {
    if (levelMeter_ != nullptr) {
        levelMeter_(peakOf(block, length, 0), peakOf(block, length, 1), levelMeterContext_);
    }
}

// Every block the take gets (or the monitor measures) passes here, mixed or
// the voice alone, so this is where clipping is counted.
void CRecWav::writeToSink(const uint8_t* bytes, uint32_t count) {
    noteClipping(bytes, count);
    if (!sink_.write(bytes, count) && sink_.mode() == kSinkWavFile) {
        recordFault(CaptureFault::kOutputWrite,
                    outputFileName_ + ": could not be written (disk full?)");
    }
}

void CRecWav::noteClipping(const uint8_t* bytes, uint32_t count) {
    if (!reachesFullScale(bytes, count)) {
        return;
    }
    ++clippedBlocks_;
    if (clipNotice_ != nullptr) {
        clipNotice_(clippedBlocks_, clipNoticeContext_);
    }
}

// The voice file is a companion of the take, not the take: a singer would
// rather keep the whole take than lose it over its spare copy. So a voice
// file that cannot be written is finished as far as it got (a clean prefix)
// and the take goes on; the owner says so once the take is over.
void CRecWav::writeVoice(const uint8_t* bytes, uint32_t count) {
    if (!voiceSink_.write(bytes, count) && voiceSink_.mode() == kSinkWavFile) {
        noteVoiceFault("could not be written (disk full?)");
    }
}

// How the key and tempo moved during the take is only known once it is
// over, so it follows the voice. A take cut off by a crash lacks it and is
// mixed again at the key and tempo it started with.
bool CRecWav::closeVoiceFile() {
    const KeyTempoChanges changes = playback_ ? playback_->keyTempoChanges() : KeyTempoChanges{};
    if (changes.empty()) {
        return voiceSink_.close() == 1;
    }
    const NoteChunk note = encodeKeyTempoChanges(changes);
    return voiceSink_.close(&note) == 1;
}

void CRecWav::noteVoiceFault(const std::string& what) {
    if (voiceError_.empty()) {
        voiceError_ = voiceFileName_ + ": " + what + "; the take is kept without it";
        logAlways(voiceError_);
    }
}

// Only the first fault of a run counts: it is the cause, the rest follow.
void CRecWav::recordFault(CaptureFault fault, std::string reason) {
    if (fault_ != CaptureFault::kNone) {
        return;
    }
    fault_ = fault;
    lastError_ = std::move(reason);
    if (faultNotice_ != nullptr) {
        dispatcher_.post([callback = faultNotice_, context = faultNoticeContext_, fault] {
            callback(fault, context);
        });
    }
}

uint32_t CRecWav::capturePosition() {
    uint32_t bytes = 0;
    if (!device_ || device_->position(bytes) != kAudioOk) {
        return 0;
    }
    return bytes;
}

void CRecWav::freeAll() {
    watchdog_.disarm();
    if (device_) {
        device_->reset();
        unprepareAll();
        device_->close();
        device_.reset();
    }
    if (!sink_.close() && sink_.mode() == kSinkWavFile) {
        recordFault(CaptureFault::kOutputWrite, outputFileName_ + ": could not be finished");
    }
    sink_.setMode(kSinkNone);
    if (!closeVoiceFile() && voiceSink_.mode() == kSinkWavFile) {
        noteVoiceFault("could not be finished");
    }
    voiceSink_.setMode(kSinkNone);
    if (inbox_) {
        inbox_->engine = nullptr;
        inbox_.reset();
    }
    if (effectsReady_) {
        fltEqualizerFree(micCtl_);
    }
    syncMx_.free();
    RecBuf.release();
    cpybuf_.reset();
    effectsReady_ = 0;
    playback_ = nullptr;
    queued_ = 0;
}

}  // namespace tunebox
