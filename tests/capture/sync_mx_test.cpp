#include "capture/sync_mx.h"

#include <gtest/gtest.h>

#include <vector>

#include "core/heap.h"
#include "platform/audio_device.h"
#include "playback/playback_feed.h"
#include "support/log_records.h"

namespace tunebox {
namespace {

constexpr uint32_t kBlock = 400;  // 100 frames

// Little-endian 16-bit samples counting up from `first`.
std::vector<uint8_t> rampBlock(int16_t first, uint32_t bytes = kBlock) {
    std::vector<uint8_t> block(bytes);
    for (uint32_t i = 0; i + 1 < bytes; i += 2) {
        const auto sample = static_cast<uint16_t>(first + static_cast<int16_t>(i / 2));
        block[i] = static_cast<uint8_t>(sample);
        block[i + 1] = static_cast<uint8_t>(sample >> 8);
    }
    return block;
}

int16_t sampleAt(const std::vector<uint8_t>& block, std::size_t index) {
    return static_cast<int16_t>(block[2 * index] | (block[2 * index + 1] << 8));
}

class SyncMxTest : public ::testing::Test {
  protected:
    void allocateManual(int32_t delay) {
        ASSERT_EQ(mixer_.allocate(kBlock, kBlock, delay, nullptr, 1), 1);
    }
    void queueVoice(int blocks, int16_t first = 0, uint32_t endFlag = 0) {
        for (int i = 0; i < blocks; ++i) {
            const auto block = rampBlock(static_cast<int16_t>(first + i * kBlock / 2));
            ASSERT_EQ(mixer_.P1_WriteBuf(block.data(), kBlock, endFlag), 1);
        }
    }
    void queueSilentAccompaniment(int blocks, uint32_t endFlag = 0) {
        const std::vector<uint8_t> silence(kBlock);
        for (int i = 0; i < blocks; ++i) {
            mixer_.P2_WriteBuf(silence.data(), kBlock, i + 1 == blocks ? endFlag : 0);
        }
    }
    int mix() { return mixer_.mixBlock(out_.data(), length_, endFlag_); }

    SyncMx mixer_;
    std::vector<uint8_t> out_ = std::vector<uint8_t>(kBlock);
    uint32_t length_ = 0;
    uint32_t endFlag_ = 0;
};

TEST(MixSample, SumsTruncateAndClipSymmetricallyNeverReachingMinus32768) {
    EXPECT_EQ(mixSample(100, -50, 100, 100), 50);
    EXPECT_EQ(mixSample(20000, 20000, 100, 100), 32767);
    EXPECT_EQ(mixSample(-20000, -20000, 100, 100), -32767);
    EXPECT_EQ(mixSample(-16384, -16384, 100, 100), -32767);
    EXPECT_EQ(mixSample(-32768, 32767, 100, 100), -1);
    EXPECT_EQ(mixSample(-3, 0, 50, 100), -1);  // -1.5 truncates toward zero
}

// The delay is whole frames, rounded toward zero, and that many voice bytes
// are dropped once: the first mixed sample is the voice's sample 500.
TEST_F(SyncMxTest, ManualDelayIsRoundedToFramesAndDiscardedOnce) {
    allocateManual(1002);
    queueVoice(5);
    queueSilentAccompaniment(2);
    ASSERT_EQ(mix(), 1);
    EXPECT_EQ(mixer_.currentDelay(), 1000);
    EXPECT_EQ(length_, kBlock);
    EXPECT_EQ(sampleAt(out_, 0), 500);
    EXPECT_EQ(sampleAt(out_, 199), 699);
    ASSERT_EQ(mix(), 1);
    EXPECT_EQ(sampleAt(out_, 0), 700);  // no second discard
}

// A calibration corrects what the positions give (here both 0); a manual
// delay is absolute and takes none of it.
TEST_F(SyncMxTest, CalibrationIsAddedToTheMeasuredDelayButNotToAManualOne) {
    mixer_.setCalibration(802);
    ASSERT_EQ(mixer_.allocate(kBlock, kBlock, 0, nullptr, 0), 1);
    queueVoice(5);
    queueSilentAccompaniment(2);
    ASSERT_EQ(mix(), 1);
    EXPECT_EQ(mixer_.currentDelay(), 800);
    EXPECT_EQ(sampleAt(out_, 0), 400);

    allocateManual(1002);
    queueVoice(5);
    queueSilentAccompaniment(2);
    ASSERT_EQ(mix(), 1);
    EXPECT_EQ(mixer_.currentDelay(), 1000);
}

// A negative delay owes that much silence before the voice, so the voice's
// first sample lines up with accompaniment frame 1 (4 bytes in).
TEST_F(SyncMxTest, NegativeDelayPutsSilenceBeforeTheVoice) {
    allocateManual(-6);
    queueSilentAccompaniment(2);
    EXPECT_EQ(mix(), 0);  // no voice yet: even a negative delay waits for it
    queueVoice(2, 1000);
    ASSERT_EQ(mix(), 1);
    EXPECT_EQ(mixer_.currentDelay(), -4);
    EXPECT_EQ(sampleAt(out_, 0), 0);
    EXPECT_EQ(sampleAt(out_, 1), 0);
    EXPECT_EQ(sampleAt(out_, 2), 1000);
    EXPECT_EQ(sampleAt(out_, 199), 1197);
    ASSERT_EQ(mix(), 1);
    EXPECT_EQ(sampleAt(out_, 0), 1198);
}

TEST_F(SyncMxTest, NothingIsConsumedUntilBothRingsHoldAFullBlock) {
    allocateManual(0);
    EXPECT_EQ(mix(), 0);
    EXPECT_EQ(mixer_.aligned(), 0);  // an empty voice ring waits even for 0
    queueVoice(1);
    EXPECT_EQ(mix(), 0);
    EXPECT_EQ(mixer_.aligned(), 1);
    EXPECT_EQ(length_, 0u);
    queueSilentAccompaniment(1);
    ASSERT_EQ(mix(), 1);
    EXPECT_EQ(sampleAt(out_, 0), 0);  // the voice's block was kept whole
    EXPECT_EQ(sampleAt(out_, 199), 199);
}

// Only the accompaniment's end flag ends the mix, also when the voice's
// block carries one.
TEST_F(SyncMxTest, TheEndComesFromTheAccompanimentOnly) {
    allocateManual(0);
    queueVoice(1, 0, 1);
    queueVoice(1);
    queueSilentAccompaniment(2, 1);
    ASSERT_EQ(mix(), 1);
    EXPECT_EQ(endFlag_, 0u);
    ASSERT_EQ(mix(), 1);
    EXPECT_EQ(endFlag_, 1u);
}

TEST_F(SyncMxTest, AFullVoiceRingRefusesTheBlockButCountsItsBytes) {
    allocateManual(0);
    queueVoice(29);
    const auto block = rampBlock(0);
    EXPECT_EQ(mixer_.P1_WriteBuf(block.data(), kBlock, 0), 0);
    EXPECT_EQ(mixer_.microphoneBytes(), 30 * kBlock);
    queueSilentAccompaniment(1);
    ASSERT_EQ(mix(), 1);
    EXPECT_EQ(mixer_.P1_WriteBuf(block.data(), kBlock, 0), 1);
}

// Devices whose positions and stalls the test sets.
class SetPositions final : public InputDevice, public PlaybackFeed {
  public:
    AudioResult open(const WaveFormat&, DeviceDoneCallback) override { return kAudioOk; }
    AudioResult prepare(WaveHeader&) override { return kAudioOk; }
    AudioResult unprepare(WaveHeader&) override { return kAudioOk; }
    AudioResult reset() override { return kAudioOk; }
    AudioResult close() override { return kAudioOk; }
    AudioResult position(uint32_t& bytes) override {
        bytes = captured;
        return kAudioOk;
    }
    std::string lastError() const override { return {}; }
    AudioResult addBuffer(WaveHeader&) override { return kAudioOk; }
    AudioResult start() override { return kAudioOk; }
    AudioResult stop() override { return kAudioOk; }

    LingBuffer& mixBuf() override { return unused_; }
    uint32_t devicePosition() override { return played; }
    OutputStalls deviceStalls(uint32_t first) override { return stalls.since(first); }
    KeyTempoChanges keyTempoChanges() override { return {}; }

    uint32_t played = 0;
    uint32_t captured = 0;
    StallRecord stalls;

  private:
    LingBuffer unused_;
};

// A growing delay goes to the output's stall as silence. Two stalls between
// one reading and the next share the change in a way nobody can tell, so
// the stretch between them is off and the take says so; one stall is exact.
TEST_F(SyncMxTest, SeveralStallsBetweenTwoReadingsPutTheTakeOutOfSync) {
    for (const uint32_t stalls : {1u, 2u}) {
        SCOPED_TRACE(stalls);
        SetPositions devices;
        ASSERT_EQ(mixer_.allocate(kBlock, kBlock, 0, &devices, 0), 1);
        mixer_.setInputDevice(&devices);
        devices.played = 1000;
        devices.captured = 1400;
        queueVoice(10);
        queueSilentAccompaniment(10);
        ASSERT_EQ(mix(), 1);
        EXPECT_EQ(mixer_.alignedDelay(), 400);
        for (uint32_t k = 0; k < stalls; ++k) {
            devices.stalls.note(1600 + 100 * k);
        }
        devices.played = 2000;
        devices.captured = 3200;  // the delay grew by 800 bytes, 4.5 ms
        ASSERT_EQ(mix(), 1);
        EXPECT_EQ(mixer_.outputStalls(), stalls);
        EXPECT_EQ(mixer_.outOfSyncFrom().has_value(), stalls > 1);
    }
}

TEST(SyncMx, AllocationFailureLogsTheBlockAndLeavesNothing) {
    test::LogDirectory log;
    SyncMx mixer;
    heapFailAfter(30);
    EXPECT_EQ(mixer.allocate(kBlock, kBlock, 0, nullptr, 1), 0);
    heapFailAfter(-1);
    EXPECT_EQ(log.messages(), std::vector<std::string>{"ﾒﾓﾘ確保失敗:P2Buf.ling[i].buf"});
    const uint8_t byte = 0;
    EXPECT_EQ(mixer.P1_WriteBuf(&byte, 1, 0), 0);
}

}  // namespace
}  // namespace tunebox
