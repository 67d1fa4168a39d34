// Accompaniments in the formats libsndfile reads, and MPEG Layer II in its
// own files and inside WAVE files, against the WAVE file they were made from
// or against ffmpeg's decoding of the same file.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "support/layer1_stream_writer.h"
#include "support/riff_bytes.h"
#include "support/source_reading.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

constexpr uint32_t kRequest = 5000;  // not a whole number of frames or blocks
constexpr std::size_t kWaveHeaderBytes = 44;

// The normalised correlation of two interleaved stereo signals with
// `theirs` moved `shift` frames, over `count` samples from `from` (all that
// overlap when `count` is 0).
double correlation(const std::vector<int16_t>& ours, const std::vector<int16_t>& theirs, long shift,
                   long from = 0, long count = 0) {
    const long first = std::max(from, -shift * 2);
    long last = std::min<long>(static_cast<long>(ours.size()),
                               static_cast<long>(theirs.size()) - shift * 2);
    if (count != 0) {
        last = std::min(last, first + count);
    }
    double both = 0.0;
    double own = 1e-9;
    double other = 1e-9;
    for (long i = first; i < last; ++i) {
        const double a = ours[i];
        const double b = theirs[i + shift * 2];
        both += a * b;
        own += a * a;
        other += b * b;
    }
    return both / std::sqrt(own * other);
}

// The best correlation over shifts of up to `maxShift` frames, the shift
// found on a quarter of a second and the figure taken over the whole signal.
struct Alignment {
    double correlation = 0.0;
    long shift = 0;
};

Alignment bestAlignment(const std::vector<int16_t>& ours, const std::vector<int16_t>& theirs,
                        long maxShift) {
    constexpr long kWindowFrom = 2 * 22050;
    constexpr long kWindowSamples = 2 * 11025;
    Alignment best{-1.0, 0};
    for (long shift = -maxShift; shift <= maxShift; ++shift) {
        const double windowed = correlation(ours, theirs, shift, kWindowFrom, kWindowSamples);
        if (windowed > best.correlation) {
            best = {windowed, shift};
        }
    }
    best.correlation = correlation(ours, theirs, best.shift);
    return best;
}

class SndfileSourceTest : public ::testing::Test {
  protected:
    void SetUp() override {
        wav_ = test::synthesise(dir_ / "tone.wav", 44100, 2, kSignal);
        wavData_ = test::readBytes(wav_);
        wavData_.erase(wavData_.begin(), wavData_.begin() + kWaveHeaderBytes);
    }

    // `wav_` made into `name` by `tool` ("sox" or "ffmpeg") with `options`
    // before the output.
    std::string make(const std::string& name, const std::string& tool,
                     const std::string& options = "") {
        const std::string path = (dir_ / name).string();
        if (tool == "sox") {
            test::runTool("sox '" + wav_ + "' " + options + " '" + path + "'");
        } else {
            test::runTool("ffmpeg -loglevel error -y -i '" + wav_ + "' " + options + " '" + path +
                          "'");
        }
        return path;
    }

    // ffmpeg's decoding of `path` as native PCM.
    std::vector<int16_t> ffmpegDecode(const std::string& path) {
        const auto raw = dir_ / "reference.raw";
        test::runTool("ffmpeg -loglevel error -y -i '" + path +
                      "' -ar 44100 -ac 2 -f s16le -c:a pcm_s16le '" + raw.string() + "'");
        return test::toSamples(test::readBytes(raw));
    }

    static constexpr const char* kSignal = "synth 2 sine 300-3000 sine 550-1100 vol 0.7";
    test::TempDir dir_;
    std::string wav_;
    std::vector<uint8_t> wavData_;
};

TEST_F(SndfileSourceTest, LosslessFilesDecodeSampleForSampleAsTheWaveTheyWereMadeFrom) {
    const std::string files[] = {
        make("tone.flac", "sox"),
        make("tone.aiff", "sox"),
        make("tone.aifc", "sox", "-t aifc"),
        make("tone.w64", "sox"),
        make("tone.caf", "ffmpeg", "-c:a pcm_s16be"),
        make("tone.rf64", "ffmpeg", "-rf64 always -f wav"),
    };
    for (const std::string& path : files) {
        SCOPED_TRACE(path);
        test::Opened opened;
        ASSERT_TRUE(test::open(path, opened)) << opened.refusal;
        EXPECT_FALSE(opened.description().converted);
        EXPECT_EQ(opened.length, wavData_.size());
        EXPECT_TRUE(test::readAll(opened, kRequest) == wavData_);

        // A seek lands on the very byte, from either direction.
        for (const uint32_t position : {176400u, 4000u}) {
            ASSERT_TRUE(opened.source->seek(position, 0));
            std::vector<uint8_t> block(kRequest);
            const SourceBlock read = opened.source->read(block.data(), kRequest);
            ASSERT_EQ(read.count, kRequest);
            EXPECT_TRUE(std::equal(block.begin(), block.end(), wavData_.begin() + position));
        }
    }
}

// The same samples at another rate and channel count take the same
// conversion whether they come in a WAVE file or a FLAC file.
TEST_F(SndfileSourceTest, OtherRatesAndChannelsConvertAsTheirWaveDoes) {
    const std::string wav = test::synthesise(dir_ / "mono.wav", 22050, 1, kSignal);
    const std::string flac = (dir_ / "mono.flac").string();
    test::runTool("sox '" + wav + "' '" + flac + "'");
    test::Opened fromWave;
    test::Opened fromFlac;
    ASSERT_TRUE(test::open(wav, fromWave));
    ASSERT_TRUE(test::open(flac, fromFlac)) << fromFlac.refusal;
    EXPECT_TRUE(fromFlac.description().resampled);
    EXPECT_EQ(fromFlac.length, fromWave.length);
    const auto expected = test::toSamples(test::readAll(fromWave, kRequest));
    const auto decoded = test::toSamples(test::readAll(fromFlac, kRequest));
    ASSERT_EQ(decoded.size(), expected.size());
    const auto mismatch = std::mismatch(decoded.begin(), decoded.end(), expected.begin());
    EXPECT_EQ(mismatch.first, decoded.end())
        << "first difference at sample " << (mismatch.first - decoded.begin());
}

TEST_F(SndfileSourceTest, LossyStreamsMatchFfmpegWithinOneCodecFrame) {
    const struct {
        std::string path;
        long frameSamples;  // one codec frame in native frames
        uint32_t builtinFirst;
    } streams[] = {
        {make("tone.ogg", "ffmpeg", "-c:a libvorbis -q:a 5"), 2048, 0},
        {make("tone.opus", "ffmpeg", "-c:a libopus -b:a 128k"), 882, 0},
        {make("tone.mp2", "ffmpeg", "-c:a mp2 -b:a 192k"), 1152, 0},
        {(dir_ / "tone.mp2").string(), 1152, 1},
        {make("mp2.wav", "ffmpeg", "-c:a mp2 -b:a 192k -f wav"), 1152, 0},
        {(dir_ / "mp2.wav").string(), 1152, 1},
    };
    for (const auto& stream : streams) {
        SCOPED_TRACE(stream.path + (stream.builtinFirst == 1 ? " (built-in)" : ""));
        test::Opened opened;
        ASSERT_TRUE(test::open(stream.path, opened, stream.builtinFirst)) << opened.refusal;
        const auto ours = test::toSamples(test::readAll(opened, kRequest));
        const auto theirs = ffmpegDecode(stream.path);
        const auto frames = [](const std::vector<int16_t>& samples) {
            return static_cast<long>(samples.size() / 2);
        };
        EXPECT_LE(std::abs(frames(ours) - frames(theirs)), stream.frameSamples);
        EXPECT_LE(std::abs(static_cast<long>(opened.length / 4) - frames(ours)),
                  stream.frameSamples);
        const Alignment alignment = bestAlignment(ours, theirs, stream.frameSamples);
        EXPECT_GT(alignment.correlation, 0.99) << "shift " << alignment.shift;
    }
}

// No encoder at hand writes Layer I: a stream written bit by bit opens as an
// .mp1 file on either decoder, and the two give the same signal.
TEST_F(SndfileSourceTest, LayerOneFilesPlayOnEitherDecoderAlike) {
    const std::string path = (dir_ / "noise.mp1").string();
    test::writeFile(path, test::layer1Stream({}));
    std::vector<int16_t> decoded[2];
    for (const uint32_t builtinFirst : {0u, 1u}) {
        SCOPED_TRACE(builtinFirst);
        test::Opened opened;
        ASSERT_TRUE(test::open(path, opened, builtinFirst)) << opened.refusal;
        EXPECT_EQ(opened.description().builtinDecoder, builtinFirst == 1);
        decoded[builtinFirst] = test::toSamples(test::readAll(opened, kRequest));
        EXPECT_LE(std::abs(static_cast<long>(opened.length / 2) -
                           static_cast<long>(decoded[builtinFirst].size())),
                  2 * 384);
    }
    EXPECT_LE(std::abs(static_cast<long>(decoded[0].size()) - static_cast<long>(decoded[1].size())),
              2 * 384);
    EXPECT_GT(correlation(decoded[0], decoded[1], 0), 0.99);
}

// A file cut short or damaged opens to what can be decoded of it, or is
// refused with a reason; a length never promises more than the reads give.
TEST_F(SndfileSourceTest, CutAndDamagedFilesNeverPromiseMoreThanTheyHold) {
    // Noise, so that the cut falls well inside the audio of every kind
    // rather than in an Ogg file's headers.
    wav_ = test::synthesise(dir_ / "noise.wav", 44100, 2, "synth 2 pinknoise vol 0.5");
    const std::size_t wholeLength = test::readBytes(wav_).size() - kWaveHeaderBytes;
    const std::string whole[] = {
        make("cut.flac", "sox"),
        make("cut.aiff", "sox"),
        make("cut.ogg", "ffmpeg", "-c:a libvorbis"),
    };
    std::mt19937 random(18);
    for (const std::string& path : whole) {
        SCOPED_TRACE(path);
        const auto bytes = test::readBytes(path);
        test::writeFile(path, test::Bytes(bytes.begin(), bytes.begin() + bytes.size() * 3 / 5));
        test::Opened cut;
        ASSERT_TRUE(test::open(path, cut)) << cut.refusal;
        EXPECT_LT(cut.length, wholeLength);
        EXPECT_GT(cut.length, wholeLength / 3);
        EXPECT_EQ(test::readAll(cut, kRequest).size(), cut.length);

        for (int damage = 0; damage < 8; ++damage) {
            test::Bytes flipped = bytes;
            std::uniform_int_distribution<std::size_t> at(0, flipped.size() - 1);
            for (int flip = 0; flip < 16; ++flip) {
                flipped[at(random)] ^= 0x5A;
            }
            test::writeFile(path, flipped);
            test::Opened damaged;
            if (test::open(path, damaged)) {
                static_cast<void>(test::readAll(damaged, kRequest));
            } else {
                EXPECT_FALSE(damaged.refusal.empty());
            }
        }
    }
}

}  // namespace
}  // namespace tunebox
