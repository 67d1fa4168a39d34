// Every vector path this processor has decodes real streams to the same
// samples as the scalar path, bit for bit: the compliance streams (every
// block type, mixed blocks, intensity stereo, both MPEG versions) and lame
// streams whose loud parts clip.

#include <gtest/gtest.h>

#include <string>

#include "mp3/decoder/mpeg_audio_decoder.h"
#include "mp3/decoder/simd_path.h"
#include "support/pcm_comparison.h"
#include "support/temp_dir.h"
#include "support/tool_fixture.h"

namespace tunebox {
namespace {

const std::filesystem::path kConformanceDir =
    std::filesystem::path(TUNEBOX_TESTDATA_DIR) / "mp3-conformance";

// Restores the path in use when a test ends.
class SimdPaths : public ::testing::Test {
  protected:
    ~SimdPaths() override { forceSimdPath(initial_); }

    static std::vector<int16_t> decode(const std::vector<uint8_t>& stream, SimdPath path,
                                       int reduction = 0) {
        EXPECT_TRUE(forceSimdPath(path));
        MpegAudioDecoder decoder;
        decoder.configure({.reduction = reduction});
        std::vector<int16_t> pcm;
        decoder.decodeStream(stream, pcm);
        return pcm;
    }

    static void expectEveryPathAsScalar(const std::vector<uint8_t>& stream,
                                        const std::string& name) {
        SCOPED_TRACE(name);
        ASSERT_FALSE(stream.empty());
        for (int reduction = 0; reduction <= 2; ++reduction) {
            const std::vector<int16_t> scalar = decode(stream, SimdPath::kScalar, reduction);
            ASSERT_FALSE(scalar.empty());
            for (const SimdPath path : {SimdPath::kSse2, SimdPath::kAvx2}) {
                if (!simdPathAvailable(path)) {
                    continue;
                }
                // EXPECT_EQ on the vectors would print every sample.
                const bool same = decode(stream, path, reduction) == scalar;
                EXPECT_TRUE(same) << simdPathName(path) << " at reduction " << reduction;
            }
        }
    }

    test::TempDir dir_;

  private:
    SimdPath initial_ = activeSimdPath();
};

TEST_F(SimdPaths, ComplianceStreamsBitIdenticalOnEveryPath) {
    for (const char* name : {"l3-compl", "l3-he_44khz", "l3-hecommon", "l3-si_block", "l3-si_huff",
                             "M2L3_bitrate_22_all", "M2L3_compl24"}) {
        expectEveryPathAsScalar(test::readBytes(kConformanceDir / (std::string(name) + ".bit")),
                                name);
    }
}

TEST_F(SimdPaths, LameStreamsThatClipBitIdenticalOnEveryPath) {
    // Plucks and noise bursts give short blocks; the full-scale square
    // clips after the synthesis.
    const std::string material =
        "synth 1.5 pluck 330 pluck 440 vol 0.9 : synth 0.5 whitenoise vol 0.8 : "
        "synth 1 square 110 sine 1760 vol 1.0";
    const struct {
        int rate;
        int channels;
        const char* options;
    } kStreams[] = {{44100, 2, "-V 2"}, {44100, 1, "-b 128"}, {22050, 2, "-m j -b 64"}};
    for (const auto& s : kStreams) {
        const std::string name = std::to_string(s.rate) + "_" + std::to_string(s.channels) + ".mp3";
        expectEveryPathAsScalar(test::readBytes(test::synthesiseMp3(dir_ / name, s.rate, s.channels,
                                                                    material, s.options)),
                                name + " " + s.options);
    }
}

TEST_F(SimdPaths, NamesRoundTripAndScalarIsAlwaysThere) {
    for (const SimdPath path : {SimdPath::kScalar, SimdPath::kSse2, SimdPath::kAvx2}) {
        EXPECT_EQ(simdPathNamed(simdPathName(path)), path);
    }
    EXPECT_FALSE(simdPathNamed("avx512").has_value());
    EXPECT_TRUE(forceSimdPath(SimdPath::kScalar));
    EXPECT_EQ(activeSimdPath(), SimdPath::kScalar);
}

}  // namespace
}  // namespace tunebox
