#pragma once
// The built-in MPEG audio decoder, Layers I, II and III (MPEG-1, MPEG-2 and
// MPEG 2.5): whole frames in, interleaved PCM out, by default 16-bit at the
// stream's own rate and channel count (see decoding_setup.h for the other
// outputs).
// It keeps the bit reservoir and the filter-bank state between frames, so
// frames must arrive in stream order.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "mp3/decoder/decoding_setup.h"
#include "mp3/decoder/frame_output.h"
#include "mp3/decoder/hybrid_filter_bank.h"
#include "mp3/decoder/layer3_scale_factors.h"
#include "mp3/decoder/mpeg_header.h"

namespace tunebox {

class MpegAudioDecoder {
  public:
    // Interleaved samples of the largest frame (MPEG-1 stereo), and its
    // bytes at 16 bits.
    static constexpr std::size_t kMaxFrameSamples = 2 * 1152;
    static constexpr std::size_t kMaxFrameBytes = 2 * kMaxFrameSamples;

    MpegAudioDecoder();
    ~MpegAudioDecoder();
    MpegAudioDecoder(const MpegAudioDecoder&) = delete;
    MpegAudioDecoder& operator=(const MpegAudioDecoder&) = delete;

    // Takes effect from the next frame; the synthesis starts afresh.
    void configure(const DecodingOptions& options);

    // Decodes one whole frame into `out` in the output format. Returns 1
    // with `bytesWritten` set (0 when the frame's main data begins in a
    // reservoir this decoder never saw), or 0 for an unusable frame or an
    // output too small for it.
    int decodeFrame(std::span<const uint8_t> frame, std::span<uint8_t> out,
                    std::size_t& bytesWritten);
    // The same for 16-bit output, counting samples; 0 when set up for 8.
    int decodeFrame(std::span<const uint8_t> frame, std::span<int16_t> pcm, std::size_t& written);

    // Finds the frames in a byte stream by their headers and lengths and
    // decodes them in order, appending the output. Returns the number of
    // frames that decoded; bytes that are not a whole frame are skipped.
    std::size_t decodeStream(std::span<const uint8_t> bytes, std::vector<uint8_t>& out);
    std::size_t decodeStream(std::span<const uint8_t> bytes, std::vector<int16_t>& pcm);

    // The header of the last frame that decoded, and its set-up.
    const MpegHeader& lastHeader() const { return header_; }
    const DecodingSetup& lastSetup() const { return setup_; }
    // Protected frames whose check word did not match. Such frames are
    // still decoded: a damaged bit more often costs a click than silence.
    std::size_t crcMismatches() const { return crcMismatches_; }
    void reset();
    // Drops the main data kept for later frames, which then give no output
    // until the reservoir has filled again.
    void forgetReservoir() { reservoir_.clear(); }

  private:
    // Each returns the runs of slots the frame gave (0 while the reservoir
    // fills), or -1 for an unusable frame.
    int decodeLayer1Or2(std::span<const uint8_t> frame, const MpegHeader& header,
                        const DecodingSetup& setup);
    int decodeLayer3(std::span<const uint8_t> frame, const MpegHeader& header,
                     const DecodingSetup& setup);
    void decodeGranule(int granule);
    bool takeMainData(std::span<const uint8_t> frameMainData, int mainDataBegin);
    void keepInReservoir(std::span<const uint8_t> frameMainData);
    template <typename Sample>
    std::size_t decodeStreamInto(std::span<const uint8_t> bytes, std::vector<Sample>& out);

    DecodingOptions options_;
    DecodingSetup setup_;
    MpegHeader header_;
    std::size_t crcMismatches_ = 0;
    std::vector<uint8_t> reservoir_;
    std::vector<uint8_t> mainData_;
    std::array<ScaleFactors, 2> factors_{};
    std::array<HybridFilterBank, 2> filterBanks_{};
    std::array<ChannelSynthesis, 2> synthesis_{};
    struct Work;
    std::unique_ptr<Work> work_;  // large scratch, kept off the stack
};

}  // namespace tunebox
