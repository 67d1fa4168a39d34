// Arbitrary bytes through the Layer III decoder, both as a byte stream and as
// one frame handed over whole.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "mp3/mpeg_audio_decoder.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::span<const uint8_t> bytes(data, size);
    tunebox::MpegAudioDecoder streamDecoder;
    std::vector<int16_t> pcm;
    streamDecoder.decodeStream(bytes, pcm);

    tunebox::MpegAudioDecoder frameDecoder;
    std::array<int16_t, tunebox::MpegAudioDecoder::kMaxFrameSamples> frame{};
    std::size_t written = 0;
    frameDecoder.decodeFrame(bytes, frame, written);
    frameDecoder.decodeFrame(bytes, frame, written);
    return 0;
}
