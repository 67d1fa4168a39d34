#pragma once
// The built-in MPEG audio Layer III decoder (MPEG-1, MPEG-2 and MPEG 2.5):
// whole frames in, interleaved 16-bit PCM at the stream's own rate and
// channel count out. It keeps the bit reservoir and the filter-bank state
// between frames, so frames must arrive in stream order.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "mp3/hybrid_filter_bank.h"
#include "mp3/layer3_scale_factors.h"
#include "mp3/mpeg_frame_header.h"
#include "mp3/polyphase_synthesis.h"

namespace tunebox {

// What the decoder delivers for a stream.
struct MpegOutputDescription {
    int channels = 0;
    int sampleRate = 0;
    int bitsPerSample = 16;
    std::size_t samplesPerFrame = 0;  // per channel
    std::size_t pcmBytesPerFrame = 0;
};

MpegOutputDescription describeOutput(const MpegFrameHeader& header);

class MpegAudioDecoder {
  public:
    // Interleaved samples of the largest frame (MPEG-1 stereo).
    static constexpr std::size_t kMaxFrameSamples = 2 * 1152;

    MpegAudioDecoder();
    ~MpegAudioDecoder();
    MpegAudioDecoder(const MpegAudioDecoder&) = delete;
    MpegAudioDecoder& operator=(const MpegAudioDecoder&) = delete;

    // Decodes one whole frame into `pcm`. Returns 1 with `written` set to
    // the number of samples (0 when the frame's main data begins in a
    // reservoir this decoder never saw), or 0 for an unusable frame.
    int decodeFrame(std::span<const uint8_t> frame, std::span<int16_t> pcm, std::size_t& written);

    // Finds the frames in a byte stream by their headers and lengths and
    // decodes them in order, appending the samples. Returns the number of
    // frames that decoded; bytes that are not a whole frame are skipped.
    std::size_t decodeStream(std::span<const uint8_t> bytes, std::vector<int16_t>& pcm);

    // The header of the last frame that decoded.
    const MpegFrameHeader& lastHeader() const { return header_; }
    // Protected frames whose check word did not match. Such frames are
    // still decoded: a damaged bit more often costs a click than silence.
    std::size_t crcMismatches() const { return crcMismatches_; }
    void reset();

  private:
    void decodeGranule(int granule, std::span<int16_t> pcm);
    bool takeMainData(std::span<const uint8_t> frameMainData, int mainDataBegin);

    MpegFrameHeader header_;
    std::size_t crcMismatches_ = 0;
    std::vector<uint8_t> reservoir_;
    std::vector<uint8_t> mainData_;
    std::array<ScaleFactors, 2> factors_{};
    std::array<HybridFilterBank, 2> filterBanks_{};
    std::array<PolyphaseSynthesis, 2> synthesis_{};
    struct Work;
    std::unique_ptr<Work> work_;  // large scratch, kept off the stack
};

}  // namespace tunebox
