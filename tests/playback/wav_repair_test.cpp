#include "playback/wav_repair.h"

#include <gtest/gtest.h>

#include <functional>

#include "playback/wav_writer.h"
#include "support/riff_bytes.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

using test::operator+;

constexpr uint32_t kSecond = kNativeBytesPerSecond;
constexpr std::size_t kRiffSize = 4;
constexpr std::size_t kDataSize = 40;

void storeLe32At(test::Bytes& bytes, std::size_t offset, uint32_t value) {
    for (int i = 0; i < 4; ++i) {
        bytes.at(offset + i) = static_cast<uint8_t>(value >> (8 * i));
    }
}

// Noise-like audio: its bytes now and then spell a printable chunk id, as
// real audio does.
test::Bytes audio(std::size_t count) {
    test::Bytes bytes(count);
    uint32_t state = 12345;
    for (uint8_t& byte : bytes) {
        state = state * 1103515245u + 12345u;
        byte = static_cast<uint8_t>(state >> 16);
    }
    return bytes;
}

// A finished take with a LIST chunk after its audio, as editors write it.
test::Bytes withList(const test::Bytes& take) {
    test::Bytes info;
    test::appendText(info, "INFOISFT");
    test::appendLe(info, 8, 4);
    test::appendText(info, "tunebox");
    info.push_back(0);
    test::Bytes listed = take + test::chunk("LIST", info);
    storeLe32At(listed, kRiffSize, static_cast<uint32_t>(listed.size() - 8));
    return listed;
}

class WavRepairTest : public ::testing::Test {
  protected:
    // The take as our writer finishes it.
    test::Bytes finishedTake(const test::Bytes& samples) {
        WaveWriter writer;
        wavResetWriter(writer);
        EXPECT_EQ(wavCreateFile(path_, writer), 1);
        EXPECT_EQ(wavWrite(writer, samples.data(), static_cast<uint32_t>(samples.size())), 1);
        EXPECT_EQ(wavCloseFile(writer), 1);
        return test::readBytes(path_);
    }

    void expectRefusedUntouched(const test::Bytes& bytes) {
        test::writeFile(path_, bytes);
        const RepairResult result = repairWav(path_);
        EXPECT_FALSE(result.repaired);
        EXPECT_FALSE(result.alreadyFinished);
        EXPECT_EQ(result.message.rfind("not repaired: ", 0), 0u) << result.message;
        EXPECT_EQ(test::readBytes(path_), bytes);
    }

    test::TempDir dir_;
    std::string path_ = (dir_ / "take.wav").string();
};

TEST_F(WavRepairTest, TakesCutOffAreRepairedToTheFramesTheyHold) {
    const test::Bytes samples = audio(kSecond * 5 / 2);
    const test::Bytes intact = finishedTake(samples);
    const test::Bytes firstSecond =
        finishedTake(test::Bytes(samples.begin(), samples.begin() + kSecond));
    const auto withSizes = [](test::Bytes bytes, uint32_t riffSize, uint32_t dataSize) {
        storeLe32At(bytes, kRiffSize, riffSize);
        storeLe32At(bytes, kDataSize, dataSize);
        return bytes;
    };
    const auto riffSize = static_cast<uint32_t>(intact.size() - 8);
    const auto dataSize = static_cast<uint32_t>(samples.size());
    const test::Bytes listed = withList(intact);
    // Mono 8-bit frames are odd in number here: the repaired chunk needs a pad byte.
    const test::Bytes oddFrames = audio(8001);
    const test::Bytes mono8 =
        test::chunk("fmt ", test::formatPayload(test::pcmFormat(1, 8000, 8), 16));
    const test::Bytes unpadded =
        withSizes(test::riff("WAVE", mono8 + test::chunk("data", {})) + oddFrames, 0, 0);

    struct Case {
        const char* name;
        test::Bytes damaged;
        test::Bytes expected;
    };
    const Case cases[] = {
        {"sizes never written", withSizes(intact, 0, 0), intact},
        {"sizes a second stale", withSizes(intact, riffSize - kSecond, dataSize - kSecond), intact},
        {"RIFF size right, data size 0", withSizes(intact, riffSize, 0), intact},
        {"sizes larger than the file",
         test::Bytes(intact.begin(), intact.begin() + 44 + kSecond + 3), firstSecond},
        {"cut mid-frame", withSizes(intact, 0, 0) + test::Bytes{1, 2, 3}, intact},
        {"LIST after the data, RIFF size 0", withSizes(listed, 0, dataSize), listed},
        {"odd frames", unpadded, test::riff("WAVE", mono8 + test::chunk("data", oddFrames))},
    };
    for (const Case& item : cases) {
        SCOPED_TRACE(item.name);
        test::writeFile(path_, item.damaged);
        EXPECT_EQ(inspectWav(path_).condition, WavCondition::kUnfinished);
        const RepairResult result = repairWav(path_);
        EXPECT_TRUE(result.repaired) << result.message;
        EXPECT_EQ(test::readBytes(path_), item.expected);
        EXPECT_EQ(inspectWav(path_).condition, WavCondition::kFinished);
    }
}

TEST_F(WavRepairTest, FinishedFilesAreLeftAsTheyAre) {
    const test::Bytes intact = finishedTake(audio(kSecond));
    test::Bytes id3v1;
    test::appendText(id3v1, "TAG");
    id3v1.resize(128, 'x');
    for (const test::Bytes& finished : {intact, withList(intact), intact + id3v1}) {
        test::writeFile(path_, finished);
        EXPECT_EQ(inspectWav(path_).condition, WavCondition::kFinished);
        const RepairResult result = repairWav(path_);
        EXPECT_TRUE(result.alreadyFinished);
        EXPECT_FALSE(result.repaired);
        EXPECT_EQ(test::readBytes(path_), finished);
    }
}

TEST_F(WavRepairTest, WhatCannotBeUnderstoodIsRefusedUntouched) {
    const std::string mp3 =
        test::synthesiseMp3(dir_ / "song.mp3", 44100, 2, "synth 1 sine 440", "-b 128");
    test::Bytes headerOnly = finishedTake({});
    storeLe32At(headerOnly, kRiffSize, 0);
    test::Bytes aLaw = test::riff(
        "WAVE",
        test::chunk("fmt ", test::formatPayload(test::pcmFormat(1, 8000, 8, kFormatALaw), 18)) +
            test::chunk("data", audio(800), 0));

    const std::pair<const char*, test::Bytes> cases[] = {
        {"text", {'h', 'e', 'l', 'l', 'o', '\n'}},
        {"an MP3", test::readBytes(mp3)},
        {"an empty file", {}},
        {"only a header", headerOnly},
        {"A-law", aLaw},
        {"no format chunk", test::riff("WAVE", test::chunk("data", audio(400), 0))},
        {"another RIFF form", test::riff("AVI ", test::chunk("data", audio(400), 0))},
    };
    for (const auto& [name, bytes] : cases) {
        SCOPED_TRACE(name);
        expectRefusedUntouched(bytes);
    }
    test::writeFile(path_, {});
    EXPECT_EQ(inspectWav(path_).condition, WavCondition::kNotWav);
}

}  // namespace
}  // namespace tunebox
