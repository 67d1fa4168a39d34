// The ISO Layer III compliance streams and the MPEG-2 streams beside them,
// decoded and compared with their reference output.

#include <gtest/gtest.h>

#include <string>

#include "mp3/decoder/mpeg_audio_decoder.h"
#include "support/pcm_comparison.h"

namespace tunebox {
namespace {

const std::filesystem::path kConformanceDir =
    std::filesystem::path(TUNEBOX_TESTDATA_DIR) / "mp3-conformance";

class ConformanceStream : public ::testing::TestWithParam<std::string> {};

TEST_P(ConformanceStream, MatchesReferenceWithinOneLsb) {
    const std::string name = GetParam();
    const auto stream = test::readBytes(kConformanceDir / (name + ".bit"));
    const auto reference = test::readPcm(kConformanceDir / (name + ".pcm"));
    ASSERT_FALSE(stream.empty());
    ASSERT_FALSE(reference.empty());

    MpegAudioDecoder decoder;
    std::vector<int16_t> decoded;
    EXPECT_GT(decoder.decodeStream(stream, decoded), 0u);
    // The reference may be one frame shorter, never longer.
    EXPECT_GE(decoded.size(), reference.size());
    const test::PcmDifference difference = test::comparePcm(decoded, reference);
    std::printf("%-22s compared %zu samples: max %d LSB, rms %.4f LSB\n", name.c_str(),
                difference.compared, difference.maxDifference, difference.rms);
    EXPECT_LE(difference.maxDifference, 1);
    EXPECT_LE(difference.rms, 0.05);
}

INSTANTIATE_TEST_SUITE_P(Streams, ConformanceStream,
                         ::testing::Values("l3-compl", "l3-he_32khz", "l3-he_44khz", "l3-he_48khz",
                                           "l3-hecommon", "l3-si", "l3-si_block", "l3-si_huff",
                                           "M2L3_bitrate_22_all", "M2L3_compl24"),
                         [](const auto& info) {
                             std::string name = info.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

}  // namespace
}  // namespace tunebox
