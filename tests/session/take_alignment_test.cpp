// Whole takes through the virtual devices: a known accompaniment, a known
// voice, exact latencies and no echo, so every sample of the take, and of the
// voice file beside it, is known.
#include <filesystem>

#include "capture/accompaniment_note.h"
#include "capture/sync_mx.h"
#include "platform/settings.h"
#include "playback/wav_repair.h"
#include "session/accompaniment_player.h"
#include "session/demo_tune.h"
#include "session/synthetic_voice.h"
#include "session/take_harness.h"
#include "session/take_remix.h"
#include "session/voice_file.h"
#include "support/command_runner.h"
#include "support/scoped_environment.h"
#include "support/small_mount.h"
#include "support/temp_dir.h"
#include "support/test_files.h"

namespace tunebox::test {
namespace {

constexpr uint32_t kOutputLatency = 5292;  // 30 ms
constexpr uint32_t kInputLatency = 3000;

class TakeAlignmentTest : public TakeTest {
  protected:
    // Five times real time: faster, a busy machine starves the virtual
    // devices' clock thread and the positions stop meaning what they say.
    void SetUp() override { startTake(5, {}); }

    void startTake(double speed, std::vector<VirtualStall> stalls,
                   std::vector<VirtualPositionLag> lags = {}) {
        writeNativeWav(song_, accompaniment_);
        startAudio(speed, {.outputLatencyBytes = kOutputLatency,
                           .inputLatencyBytes = kInputLatency,
                           .loopbackGain = 0,
                           .voice = voice_,
                           .outputStalls = std::move(stalls),
                           .outputPositionLags = std::move(lags)});
        controller().setEcho(0);
        track_.path = song_;
        track_.length = static_cast<uint32_t>(accompaniment_.size() * 2);
    }

    // Both devices start at one instant of the virtual clock.
    void recAtOneInstant(RecordRequest request) {
        audio_->setClockStalled(true);
        ASSERT_TRUE(controller().rec(request).capturing);
        audio_->setClockStalled(false);
    }
    // The take mixed again into `output` with the voice moved by `nudge`
    // frames; empty when it was.
    std::string remix(const std::string& output, int32_t nudge = 0) {
        return remixTake({.take = take_, .output = output, .nudge = nudge});
    }

    // Stops as soon as the accompaniment has played out.
    void runToTheEnd() {
        ASSERT_TRUE(runUntil([&] { return controller().accompanimentPlayer().wavIsStopped(); }));
        controller().stopRecorder();
    }

    std::vector<int16_t> takeSamples() { return wavDataSamples(take_); }

    // The voice file holds the voice exactly as the take mixed it, sample for
    // sample and as long, and names the accompaniment it went over.
    void expectVoiceFileLinedUp(std::ptrdiff_t voiceLag) {
        const std::string voicePath = voiceFilePath(take_);
        const auto take = takeSamples();
        std::vector<int16_t> voice = wavDataSamples(voicePath);
        ASSERT_GE(voice.size(), take.size());
        voice.resize(take.size());
        std::size_t wrong = 0;
        for (std::size_t k = 0; k < voice.size(); ++k) {
            const auto sung = static_cast<std::ptrdiff_t>(k) - voiceLag;
            wrong += voice[k] != (sung >= 0 ? voice_[static_cast<std::size_t>(sung)] : 0) ? 1 : 0;
        }
        EXPECT_EQ(wrong, 0u);
        uint32_t length = 0;
        ASSERT_EQ(wavGetLength(voicePath, length), 1);
        EXPECT_EQ(length, take.size() * 2);
        const auto note = readAccompanimentNote(voicePath);
        ASSERT_TRUE(note);
        EXPECT_EQ(note->path, std::filesystem::absolute(song_).string());
        EXPECT_EQ(note->length, track_.length);
    }

    // Every sample of the take is the clipped sum of the accompaniment and
    // the voice sung to it, `voiceLag` samples late (silence before the
    // voice).
    void expectEverySampleMixed(const std::vector<int16_t>& take, std::ptrdiff_t voiceLag = 0) {
        expectMixOf(take, voice_, accompaniment_, voiceLag);
    }
    static void expectMixOf(const std::vector<int16_t>& take, const std::vector<int16_t>& voice,
                            const std::vector<int16_t>& accompaniment, std::ptrdiff_t voiceLag = 0,
                            std::size_t from = 0) {
        ASSERT_LE(take.size(), accompaniment.size());
        std::size_t wrong = 0;
        std::size_t firstWrong = 0;
        for (std::size_t k = from; k < take.size(); ++k) {
            const auto sung = static_cast<std::ptrdiff_t>(k) - voiceLag;
            const int16_t sample = sung >= 0 ? voice[static_cast<std::size_t>(sung)] : 0;
            if (take[k] != mixSample(sample, accompaniment[k], 100, 100) && wrong++ == 0) {
                firstWrong = k;
            }
        }
        EXPECT_EQ(wrong, 0u) << "first at sample " << firstWrong << " of " << take.size();
    }

    // The whole song, of which only the last part-block, which the player
    // cuts, may be missing.
    void expectSampleExactTake(std::ptrdiff_t voiceLag = 0) {
        const auto take = takeSamples();
        EXPECT_GT(take.size() * 2 + kEngineBlockBytes, accompaniment_.size() * 2);
        expectEverySampleMixed(take, voiceLag);
    }

    std::vector<int16_t> accompaniment_ = synthesiseDemoTune();
    std::vector<int16_t> voice_ = synthesiseVoice(44100 * (kDemoTuneSeconds + 4));
    TrackEntry track_;
};

// The key and tempo stage costs real time for every second of audio, which
// a clock run much faster than real time on a loaded machine would not
// leave it.
class MovedKeyTakeTest : public TakeAlignmentTest {
  protected:
    void SetUp() override { startTake(2, {}); }
};

TEST_F(TakeAlignmentTest, MeasuredDelayAlignsEverySample) {
    ASSERT_TRUE(controller().rec({track_, 0, 0}).capturing);
    runToTheEnd();
    const SyncMx& mixer = controller().capture().syncMx();
    EXPECT_GE(mixer.alignedDelay(), static_cast<int32_t>(kOutputLatency));
    expectSampleExactTake();
    expectVoiceFileLinedUp(0);
}

// With the key and tempo moved the accompaniment is what the stage made of
// the file, which the same player renders again without a device: the take
// is that and the voice, as exactly as a plain take is the file and the voice.
TEST_F(MovedKeyTakeTest, AMovedKeyAndTempoLineUpAsThePlainTakeDoes) {
    track_.keyTempo = {.semitones = 3, .tempoPercent = 90};
    ASSERT_TRUE(controller().rec({track_, 0, 0}).capturing);
    runToTheEnd();
    EXPECT_GE(controller().capture().syncMx().alignedDelay(), static_cast<int32_t>(kOutputLatency));
    const auto heard = renderAccompaniment(track_, 0, {});
    ASSERT_TRUE(heard);
    const auto take = takeSamples();
    EXPECT_GT(take.size() * 2 + kEngineBlockBytes, heard->size());
    EXPECT_GT(take.size(), accompaniment_.size());  // 90 %: longer than the file
    expectMixOf(take, voice_, toSamples(*heard));
    expectVoiceFileLinedUp(0);
    // The voice file notes the key and tempo, so the remix moves the song alike.
    const std::string same = (dir_.path() / "same.wav").string();
    ASSERT_EQ(remix(same), "");
    EXPECT_EQ(readBytes(same), readBytes(take_));
}

// The key and then the tempo moved during the take, and back to neutral:
// the voice file notes each change with the block it applied from, so the
// remix moves the song at the same blocks, fades included, and gives back
// the take byte for byte.
TEST_F(MovedKeyTakeTest, KeyAndTempoMovedDuringTheTakeRemixAsTheyWereHeard) {
    track_.keyTempoMayMove = true;
    ASSERT_TRUE(controller().rec({track_, 0, 0}).capturing);
    WaveCtl& player = controller().accompanimentPlayer();
    const std::vector<KeyTempo> moves{{.semitones = 2}, {.semitones = 2, .tempoPercent = 115}, {}};
    for (std::size_t i = 0; i < moves.size(); ++i) {
        const auto played = static_cast<uint32_t>((i + 1) * 3 * kNativeBytesPerSecond / 2);
        ASSERT_TRUE(runUntil([&] { return player.wavGetDevicePosition() >= played; }));
        player.wavSetKeyTempo(moves[i]);
    }
    runToTheEnd();
    const auto note = readAccompanimentNote(voiceFilePath(take_));
    ASSERT_TRUE(note);
    ASSERT_EQ(note->changes.size(), moves.size());
    for (std::size_t i = 0; i < moves.size(); ++i) {
        EXPECT_EQ(note->changes[i].keyTempo, moves[i]);
    }
    const std::string same = (dir_.path() / "same.wav").string();
    ASSERT_EQ(remix(same), "");
    EXPECT_EQ(readBytes(same), readBytes(take_));
}

// A calibration saved for these devices moves every voice sample by what it
// adds: here 400 bytes (200 samples) earlier than the positions alone put it.
TEST_F(TakeAlignmentTest, TheSavedCalibrationOfTheDevicesIsAddedToTheMeasuredDelay) {
    const TempDir config;
    const ScopedEnvironment configDir("TUNEBOX_CONFIG_DIR", config.path().c_str());
    writeCalibration(audio_->devicePair(), 400);
    const RecStart started = controller().rec({track_, 0, 0});
    ASSERT_TRUE(started.capturing);
    ASSERT_TRUE(started.calibration);
    EXPECT_EQ(started.calibration->correctionBytes, 400);
    runToTheEnd();
    // The take stops when the song has played out, before the voice for its
    // last 200 samples, taken that much later, has been captured.
    auto take = takeSamples();
    take.resize(take.size() - 200);
    expectEverySampleMixed(take, -200);
}

// With both devices started at one instant of the virtual clock the true
// delay is the output latency, which the user types in.
TEST_F(TakeAlignmentTest, ManualDelayAlignsEverySample) {
    recAtOneInstant({track_, 1, kOutputLatency});
    runToTheEnd();
    EXPECT_EQ(controller().capture().syncMx().alignedDelay(), static_cast<int32_t>(kOutputLatency));
    expectSampleExactTake();
}

// A delay typed too small, below zero, cannot drop voice bytes: the voice is
// put that much later behind silence instead, and the take still ends with
// the accompaniment.
TEST_F(TakeAlignmentTest, NegativeManualDelayDelaysTheVoiceBehindSilence) {
    constexpr int32_t kTyped = -4000;
    recAtOneInstant({track_, 1, kTyped});
    runToTheEnd();
    EXPECT_EQ(controller().capture().syncMx().alignedDelay(), kTyped);
    expectSampleExactTake((kOutputLatency - kTyped) / 2);
    expectVoiceFileLinedUp((kOutputLatency - kTyped) / 2);
}

// The voice file on a disk that fills up half-way: the take goes on to the
// song's end untouched, and the voice file keeps what fitted, finished.
TEST_F(TakeAlignmentTest, AVoiceFileThatRunsOutOfRoomKeepsTheWholeTake) {
    const SmallMount small(dir_.path() / "small", "size=512k");
    if (!small.mounted()) {
        GTEST_SKIP() << "mounting a tmpfs needs privileges this run lacks";
    }
    const auto voicePath = dir_.path() / "small" / "voice.wav";
    std::filesystem::create_symlink(voicePath, voiceFilePath(take_));
    recAtOneInstant({track_, 1, kOutputLatency});
    runToTheEnd();
    expectSampleExactTake();
    const CRecWav& capture = controller().capture();
    EXPECT_EQ(capture.fault(), CaptureFault::kNone);
    EXPECT_NE(capture.voiceFileError().find("could not be written"), std::string::npos);
    EXPECT_EQ(inspectWav(voicePath.string()).condition, WavCondition::kFinished)
        << inspectWav(voicePath.string()).detail;
    const auto kept = wavDataSamples(voicePath.string());
    ASSERT_GT(kept.size(), 0u);
    EXPECT_TRUE(std::equal(kept.begin(), kept.end(), voice_.begin())) << "a clean prefix";
}

TEST_F(TakeAlignmentTest, WithoutTheVoiceFileOnlyTheTakeIsWritten) {
    RecordRequest request{track_, 1, kOutputLatency};
    request.voiceFile = false;
    recAtOneInstant(request);
    runToTheEnd();
    expectSampleExactTake();
    EXPECT_FALSE(std::filesystem::exists(voiceFilePath(take_)));
}

// A take started a second into the song, mixed again from its files: with no
// nudge it is the take byte for byte; a nudge of 10 ms moves the voice 441
// frames later and nothing else, and -10 ms as far earlier.
TEST_F(TakeAlignmentTest, ARemixWithoutNudgeIsTheTakeAndANudgeMovesOnlyTheVoice) {
    controller().setAccompanimentStart(kNativeBytesPerSecond + 4 * 17);
    recAtOneInstant({track_, 1, kOutputLatency});
    runToTheEnd();
    const std::string same = (dir_.path() / "same.wav").string();
    ASSERT_EQ(remix(same), "");
    EXPECT_EQ(readBytes(same), readBytes(take_));

    const auto unmoved = wavDataSamples(same);
    auto voice = wavDataSamples(voiceFilePath(take_));
    voice.resize(unmoved.size());
    for (const int32_t milliseconds : {10, -10}) {
        SCOPED_TRACE(milliseconds);
        const std::string moved = (dir_.path() / "moved.wav").string();
        ASSERT_EQ(remix(moved, nudgeFrames(milliseconds)), "");
        const auto nudged = wavDataSamples(moved);
        ASSERT_EQ(nudged.size(), unmoved.size());
        const std::ptrdiff_t shift = 2 * 441 * milliseconds / 10;
        std::size_t wrong = 0;
        for (std::size_t k = 0; k < nudged.size(); ++k) {
            const auto from = static_cast<std::ptrdiff_t>(k) - shift;
            const int was = from >= 0 && from < static_cast<std::ptrdiff_t>(voice.size())
                                ? voice[static_cast<std::size_t>(from)]
                                : 0;
            // Clipped sums tell nothing about what went into them.
            if (std::abs(nudged[k]) < 32767 && std::abs(unmoved[k]) < 32767) {
                wrong += nudged[k] - unmoved[k] != was - voice[k] ? 1 : 0;
            }
        }
        EXPECT_EQ(wrong, 0u);
    }
}

// The two MP3 decoders differ in their last bits, so the remix decodes the
// song with the one the take used, whatever the settings say by then.
TEST_F(TakeAlignmentTest, ARemixDecodesAnMp3WithTheDecoderOfTheTake) {
    const std::string mp3 = (dir_.path() / "song.mp3").string();
    ASSERT_EQ(run("lame --quiet -b 128 '" + song_ + "' '" + mp3 + "'"), 0);
    track_.path = mp3;
    ASSERT_EQ(wavGetLength(mp3, track_.length), 1);
    controller().setSourceOptions({.builtinDecoderFirst = true});
    recAtOneInstant({track_, 1, kOutputLatency});
    runToTheEnd();
    const auto note = readAccompanimentNote(voiceFilePath(take_));
    ASSERT_TRUE(note);
    EXPECT_TRUE(note->builtinDecoderFirst);
    const std::string same = (dir_.path() / "same.wav").string();
    ASSERT_EQ(remix(same), "");
    EXPECT_EQ(readBytes(same), readBytes(take_));
}

TEST_F(TakeAlignmentTest, ARemixRefusesAChangedAccompanimentAndAMissingVoiceFile) {
    recAtOneInstant({track_, 1, kOutputLatency});
    runToTheEnd();
    const auto before = readBytes(take_);
    writeNativeWav(song_, {accompaniment_.begin(), accompaniment_.end() - 2});
    EXPECT_NE(remix(take_).find("has changed since the take"), std::string::npos);
    std::filesystem::remove(voiceFilePath(take_));
    EXPECT_NE(remix(take_).find("no voice file"), std::string::npos);
    EXPECT_EQ(readBytes(take_), before);
}

// STOP in the middle of the song and of a capture buffer: the take ends on
// the last voice sample captured before the stop, over the accompaniment it
// was sung to; nothing of either comes after it.
TEST_F(TakeAlignmentTest, StopMidSongEndsVoiceAndAccompanimentOnTheSameSample) {
    recAtOneInstant({track_, 1, kOutputLatency});
    ASSERT_TRUE(runUntil([&] {
        const uint32_t captured = controller().capture().capturePosition();
        return captured > 3 * kNativeBytesPerSecond && captured % kEngineBlockBytes != 0;
    }));
    audio_->setClockStalled(true);
    const uint32_t captured = controller().capture().capturePosition();
    controller().stopRecorder();
    audio_->setClockStalled(false);
    EXPECT_FALSE(controller().captureActive());

    const auto take = takeSamples();
    EXPECT_EQ(take.size() * 2, captured - kOutputLatency);
    expectEverySampleMixed(take);
}

// Output stalls: the device stands still for 300 ms two seconds into the
// song while the microphone runs on, and the singer, hearing nothing, waits.
class StalledTakeTest : public TakeAlignmentTest {
  protected:
    static constexpr uint32_t kStallAt = 2 * kNativeBytesPerSecond + 4 * 1000;
    static constexpr uint32_t kStallFrames = 13230;

    void SetUp() override {}

    // `signal` as it was heard: the stall's silence at its place.
    static std::vector<int16_t> withStall(const std::vector<int16_t>& signal) {
        std::vector<int16_t> heard(signal.begin(), signal.begin() + kStallAt / 2);
        heard.resize(heard.size() + 2 * kStallFrames);
        heard.insert(heard.end(), signal.begin() + kStallAt / 2, signal.end());
        return heard;
    }
};

// A stall the device tells of is placed exactly: the take holds the song
// and the voice as they were heard, silence and all, to the sample.
TEST_F(StalledTakeTest, AToldStallIsPlacedInTheAccompanimentToTheSample) {
    startTake(5, {{.atBytes = kStallAt, .frames = kStallFrames}});
    ASSERT_TRUE(controller().rec({track_, 0, 0}).capturing);
    runToTheEnd();
    const auto take = takeSamples();
    EXPECT_GT(take.size() * 2 + kEngineBlockBytes, accompaniment_.size() * 2 + kStallFrames * 4);
    expectMixOf(take, withStall(voice_), withStall(accompaniment_));
    EXPECT_EQ(controller().capture().syncMx().outputStalls(), 1u);
    EXPECT_FALSE(shown_.outOfSyncFrom);
}

// A stall nobody tells of is found by the positions and made good at the
// next block mixed; the stretch before it is out of sync, and the singer is
// told from where. After the stall the take lines up again.
TEST_F(StalledTakeTest, AStallNobodyToldOfEndsTheTakeWithTheMomentItWentOutOfSync) {
    startTake(5, {{.atBytes = kStallAt, .frames = kStallFrames, .reported = false}});
    ASSERT_TRUE(controller().rec({track_, 0, 0}).capturing);
    runToTheEnd();
    ASSERT_TRUE(shown_.outOfSyncFrom);
    EXPECT_LE(*shown_.outOfSyncFrom, kStallAt);
    EXPECT_GT(*shown_.outOfSyncFrom + 2 * kEngineBlockBytes, kStallAt);
    EXPECT_EQ(controller().capture().syncMx().outputStalls(), 0u);
    const auto take = takeSamples();
    expectMixOf(take, withStall(voice_), withStall(accompaniment_), 0,
                kStallAt / 2 + 2 * kStallFrames);
}

// The output's position lags 10 ms behind what is heard for 1.2 s, as a
// server's timing reports do after it was held up, then agrees again. The
// readings in that stretch are not a stall: the take stays exact and in sync.
TEST_F(StalledTakeTest, PositionsThatDisagreeForAMomentMoveNothing) {
    startTake(5, {},
              {{.fromBytes = kStallAt,
                .untilBytes = kStallAt + 12 * kNativeBytesPerSecond / 10,
                .bytes = 441 * 4}});
    ASSERT_TRUE(controller().rec({track_, 0, 0}).capturing);
    runToTheEnd();
    EXPECT_FALSE(shown_.outOfSyncFrom);
    expectSampleExactTake();
}

}  // namespace
}  // namespace tunebox::test
