#include "platform/codec_manager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "platform/g711.h"
#include "support/riff_bytes.h"
#include "support/signal_measure.h"
#include "support/test_files.h"

namespace tunebox {
namespace {

using test::pcmFormat;

std::array<uint8_t, kCodecMaxFormatBytes> recordOf(const WaveFormat& format) {
    std::array<uint8_t, kCodecMaxFormatBytes> record{};
    storeWaveFormat(format, record);
    return record;
}

// Converts a whole source in blocks of `block` bytes, then ends the stream,
// collecting every output byte.
std::vector<uint8_t> convertAll(CodecStream& stream, const std::vector<uint8_t>& source,
                                uint32_t block) {
    std::vector<uint8_t> out;
    std::vector<uint8_t> destination(2 * stream.destinationSizeFor(block));
    CodecStreamHeader header;
    header.destination = destination.data();
    header.destinationLength = static_cast<uint32_t>(destination.size());
    const auto take = [&](uint32_t flags) {
        EXPECT_EQ(stream.convert(header, flags), kCodecOk);
        out.insert(out.end(), destination.begin(),
                   destination.begin() + header.destinationLengthUsed);
        return header.destinationLengthUsed > 0;
    };
    for (std::size_t at = 0; at < source.size(); at += block) {
        header.source = source.data() + at;
        header.sourceLength =
            static_cast<uint32_t>(std::min<std::size_t>(block, source.size() - at));
        take(0);
    }
    header.sourceLength = 0;
    while (take(kCodecConvertEnd)) {
    }
    return out;
}

TEST(G711, ExpandsTheCodeTableEnds) {
    EXPECT_EQ(expandALaw(0xD5), 8);
    EXPECT_EQ(expandALaw(0x55), -8);
    EXPECT_EQ(expandALaw(0xAA), 32256);
    EXPECT_EQ(expandALaw(0x2A), -32256);
    EXPECT_EQ(expandMuLaw(0xFF), 0);
    EXPECT_EQ(expandMuLaw(0x80), 32124);
    EXPECT_EQ(expandMuLaw(0x00), -32124);
}

TEST(CodecSuggest, ChoosesWhatEachDriverProducesAndRefusesTheImpossible) {
    WaveFormat wanted = kNativeFormat;
    auto narrow = recordOf(pcmFormat(1, 22050, 8));
    ASSERT_EQ(codecFormatSuggest(narrow, wanted, kSuggestFormatTag), kCodecOk);
    EXPECT_TRUE(sameFormat(wanted, pcmFormat(1, 22050, 16)));

    wanted = kNativeFormat;
    ASSERT_EQ(codecFormatSuggest(narrow, wanted,
                                 kSuggestFormatTag | kSuggestChannels | kSuggestSamplesPerSec),
              kCodecOk);
    EXPECT_TRUE(sameFormat(wanted, kNativeFormat));

    WaveFormat mp3{kFormatMpegLayer3, 1, 24000, 8000, 1, 0, 12};
    wanted = kNativeFormat;
    ASSERT_EQ(codecFormatSuggest(recordOf(mp3), wanted, kSuggestFormatTag), kCodecOk);
    EXPECT_TRUE(sameFormat(wanted, pcmFormat(1, 24000, 16)));
    wanted = kNativeFormat;
    EXPECT_EQ(codecFormatSuggest(recordOf(mp3), wanted, kSuggestFormatTag | kSuggestSamplesPerSec),
              kCodecNotPossible);

    WaveFormat adpcm = pcmFormat(2, 44100, 4, 2);
    wanted = kNativeFormat;
    EXPECT_EQ(codecFormatSuggest(recordOf(adpcm), wanted, kSuggestFormatTag), kCodecNotPossible);
    WaveFormat wide = pcmFormat(2, 44100, 24);
    EXPECT_EQ(codecFormatSuggest(recordOf(wide), wanted, kSuggestFormatTag), kCodecNotPossible);

    std::unique_ptr<CodecStream> stream;
    EXPECT_EQ(codecStreamOpen(stream, recordOf(mp3), kNativeFormat), kCodecNotPossible);
    EXPECT_EQ(stream, nullptr);
}

TEST(PcmStream, ResamplingKeepsLengthAndPitch) {
    const WaveFormat source = pcmFormat(1, 22050, 16);
    std::vector<uint8_t> bytes;
    const int frames = 22050;  // one second of a 1 kHz sine
    for (int i = 0; i < frames; ++i) {
        const auto value =
            static_cast<int16_t>(12000 * std::sin(2 * std::numbers::pi * 1000.0 * i / 22050));
        bytes.push_back(static_cast<uint8_t>(value & 0xFF));
        bytes.push_back(static_cast<uint8_t>((value >> 8) & 0xFF));
    }
    std::unique_ptr<CodecStream> stream;
    ASSERT_EQ(codecStreamOpen(stream, recordOf(source), kNativeFormat), kCodecOk);
    EXPECT_NE(stream->driverShortName().find("PCM"), std::string::npos);
    const auto out = test::toSamples(convertAll(*stream, bytes, 10240));
    // The filter's delay is taken off the start and its tail flushed at the end.
    ASSERT_EQ(out.size(), 2u * 44100);
    const auto peakOf = [&](std::size_t from, std::size_t to) {
        int peak = 0;
        for (std::size_t i = from; i < to; ++i) {
            peak = std::max(peak, std::abs(int{out[i]}));
        }
        return peak;
    };
    EXPECT_GT(peakOf(0, 2 * 44), 6000);  // the first millisecond already sounds
    EXPECT_GT(peakOf(out.size() - 2 * 441, out.size()), 10000);
    // Input after the end (a seek back) starts a new signal.
    EXPECT_EQ(test::toSamples(convertAll(*stream, bytes, 10240)), out);
    EXPECT_NEAR(test::toneFrequency(out, 2, 0, 44100), 1000.0, 1.0);
    EXPECT_NEAR(test::toneFrequency(out, 2, 1, 44100), 1000.0, 1.0);
}

}  // namespace
}  // namespace tunebox
