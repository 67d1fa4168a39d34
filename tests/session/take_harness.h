#pragma once
// A take controller on the simulated sound card, with a listener that keeps
// what the controller showed and an owner's loop that runs the capture
// notices, the 500 ms ticks of the running players, and the end of a take
// that a fault cut short.

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "platform/queue_dispatcher.h"
#include "platform/virtual_audio.h"
#include "playback/wav_length.h"
#include "session/take_controller.h"
#include "support/temp_dir.h"
#include "support/tone_signals.h"

namespace tunebox::test {

struct ShownTake final : TakeListener {
    std::map<TakeButton, bool> faces;
    int32_t first = 0;
    int32_t second = 0;
    bool levelsSeen = false;
    std::vector<CaptureFault> faults;
    std::map<TakePlayer, bool> ticking;
    AccompanimentReadout accompaniment;
    int recordedTrackbar = -1;
    bool startShown = false;
    int stops = 0;  // recorder stops that drained capture
    uint32_t recordedPosition = 0;
    uint32_t clipNotices = 0;
    std::vector<uint32_t> takesEnded;  // each finished take's clipped blocks
    std::optional<uint64_t> outOfSyncFrom;

    void showFace(TakeButton button, bool lit) override { faces[button] = lit; }
    void showLevels(int32_t a, int32_t b) override {
        first = a;
        second = b;
        levelsSeen = levelsSeen || a > 0;
    }
    void captureFaulted(CaptureFault fault) override { faults.push_back(fault); }
    void tickerChanged(TakePlayer player, bool running) override { ticking[player] = running; }
    void showAccompaniment(const AccompanimentReadout& readout) override {
        accompaniment = readout;
    }
    void showRecordedTrackbar(int value) override { recordedTrackbar = value; }
    void showStartPositions(uint32_t, uint32_t) override { startShown = true; }
    void recorderStopping(bool stopping) override { stops += stopping ? 1 : 0; }
    void showRecordedPosition(uint32_t bytes) override { recordedPosition = bytes; }
    void blockClipped(uint32_t) override { ++clipNotices; }
    void takeEnded(uint32_t clippedBlocks) override { takesEnded.push_back(clippedBlocks); }
    void takeOutOfSync(uint64_t fromBytes) override { outOfSyncFrom = fromBytes; }
};

class TakeTest : public ::testing::Test {
  protected:
    void TearDown() override { controller_.reset(); }

    // Speed: virtual seconds per real second.
    void startAudio(double speed, VirtualAudioConfig config = {.loopbackGain = 0.25f}) {
        config.speed = speed;
        if (config.voice.empty()) {
            config.voice = loudVoice(60);
        }
        audio_ = std::make_shared<VirtualAudio>(std::move(config));
        controller_ = std::make_unique<TakeController>(*audio_, dispatcher_, shown_);
        controller_->setOutputFile(take_);
    }

    TakeController& controller() { return *controller_; }

    // A tone of `seconds` written as the accompaniment and picked.
    TrackEntry song(double seconds) {
        writeTone(song_, seconds);
        TrackEntry entry;
        entry.path = song_;
        EXPECT_EQ(wavGetLength(song_, entry.length), 1);
        controller_->setAccompanimentLength(entry.length);
        return entry;
    }

    // The owner's loop until `done` holds; false when it never did.
    template <class Condition>
    bool runUntil(Condition done, std::chrono::milliseconds limit = std::chrono::seconds(20)) {
        using Clock = std::chrono::steady_clock;
        const auto giveUp = Clock::now() + limit;
        auto nextTick = Clock::now() + std::chrono::milliseconds(kTickMilliseconds);
        while (!done()) {
            if (Clock::now() > giveUp) {
                return false;
            }
            dispatcher_.waitForWork(std::chrono::milliseconds(10));
            dispatcher_.pumpPending();
            if (shown_.faults.size() > faultsEnded_) {
                faultsEnded_ = shown_.faults.size();
                keptRecording_ = controller_->endFaultedTake();
            }
            if (Clock::now() >= nextTick) {
                nextTick += std::chrono::milliseconds(kTickMilliseconds);
                tickRunningPlayers();
            }
        }
        return true;
    }
    void runFor(std::chrono::milliseconds wait) {
        runUntil([] { return false; }, wait);
    }
    void tickRunningPlayers() {
        for (const TakePlayer player : {TakePlayer::kAccompaniment, TakePlayer::kRecorded}) {
            if (shown_.ticking[player]) {
                controller_->tick(player);
            }
        }
    }

    TempDir dir_;
    std::string song_ = (dir_.path() / "song.wav").string();
    std::string take_ = (dir_.path() / "take.wav").string();
    std::shared_ptr<VirtualAudio> audio_;
    QueueDispatcher dispatcher_;
    ShownTake shown_;
    std::unique_ptr<TakeController> controller_;
    std::size_t faultsEnded_ = 0;
    bool keptRecording_ = false;
};

}  // namespace tunebox::test
