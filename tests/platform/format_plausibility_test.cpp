#include "platform/format_plausibility.h"

#include <gtest/gtest.h>

#include "platform/native_length.h"
#include "support/riff_bytes.h"

namespace tunebox {
namespace {

using test::pcmFormat;

TEST(FormatPlausibility, RealRecordingFormatsPass) {
    const WaveFormat layer3{kFormatMpegLayer3, 2, 44100, 128000, 1, 0, 12};
    const WaveFormat aLaw{kFormatALaw, 1, 8000, 8000, 1, 8, 0};
    for (const WaveFormat& format :
         {kNativeFormat, pcmFormat(1, 8000, 16), pcmFormat(2, 1000, 16), pcmFormat(8, 768000, 16),
          pcmFormat(1, 2757, 8), layer3, aLaw}) {
        EXPECT_EQ(implausibleFormatReason(format), "") << format.samplesPerSec;
    }
}

TEST(FormatPlausibility, EachRefusalNamesTheFieldAndItsValue) {
    WaveFormat badAlign = kNativeFormat;
    badAlign.blockAlign = 3;
    WaveFormat badRate = kNativeFormat;
    badRate.avgBytesPerSec = 100000;
    const WaveFormat silentMpeg{kFormatMpegLayer3, 2, 44100, 0, 1, 0, 12};
    const WaveFormat wideMuLaw{kFormatMuLaw, 1, 8000, 16000, 2, 16, 0};
    const std::pair<WaveFormat, std::string> cases[] = {
        {pcmFormat(2, 1, 16), "sample rate 1 Hz is outside 1000-768000 Hz"},
        {pcmFormat(1, 1, 8), "sample rate 1 Hz is outside 1000-768000 Hz"},
        {pcmFormat(2, 999, 16), "sample rate 999 Hz is outside 1000-768000 Hz"},
        {pcmFormat(2, 768001, 16), "sample rate 768001 Hz is outside 1000-768000 Hz"},
        {pcmFormat(0, 44100, 16), "channel count 0 is outside 1-8"},
        {pcmFormat(9, 44100, 16), "channel count 9 is outside 1-8"},
        {pcmFormat(2, 44100, 24), "bits per sample 24 is not supported (PCM: 8 or 16)"},
        {wideMuLaw, "bits per sample 16 is not supported (A-law, mu-law: 8)"},
        {badAlign, "block alignment 3 does not match 2 channels of 16 bits (4)"},
        {badRate,
         "average bytes per second 100000 does not match 44100 frames of 4 bytes (176400)"},
        {pcmFormat(1, 2756, 8),
         "average bytes per second 2756 is too few: native audio would be more than 64 times as "
         "large"},
        {silentMpeg, "average bytes per second 0"},
    };
    for (const auto& [format, reason] : cases) {
        EXPECT_EQ(implausibleFormatReason(format), reason);
    }
}

TEST(NativeLength, TheLargestCountFitsAndOneByteMoreIsRefused) {
    EXPECT_EQ(fittingNativeLength(4294967295.0), 4294967295u);
    EXPECT_EQ(fittingNativeLength(4294967295.9), 4294967295u);
    EXPECT_EQ(fittingNativeLength(4294967296.0), std::nullopt);
    EXPECT_EQ(fittingNativeLength(-1.0), std::nullopt);
    EXPECT_EQ(fittingNativeLength(1e300 * 1e300), std::nullopt);
    EXPECT_EQ(tooLongReason(176400.0 * 7 * 3600),
              "lasts 7:00:00, longer than the 6:45:47 a source may last");
}

}  // namespace
}  // namespace tunebox
