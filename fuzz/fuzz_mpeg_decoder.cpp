// Arbitrary bytes through the Layer I, II and III decoder, both as a byte stream and as
// one frame handed over whole, and through the tag-frame reader. The first
// byte picks the set-up: rate reduction (3 is out of range and clamped),
// output mode and frequency limit.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "mp3/builtin_decoder_feed.h"
#include "mp3/decoder/mpeg_audio_decoder.h"
#include "mp3/decoder/xing_tag.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    const uint8_t choice = data[0];
    const tunebox::DecodingOptions options{choice & 3, (choice >> 2) & 0x0B,
                                           ((choice >> 6) & 3) * 8000};
    const std::span<const uint8_t> bytes(data + 1, size - 1);

    tunebox::BuiltinDecoderState state;
    tunebox::mpegGetDecodeInfo(state, bytes);
    tunebox::XingTag tag;
    tunebox::readXingTag(bytes, tag);

    tunebox::MpegAudioDecoder streamDecoder;
    streamDecoder.configure(options);
    std::vector<uint8_t> out;
    streamDecoder.decodeStream(bytes, out);

    tunebox::MpegAudioDecoder frameDecoder;
    frameDecoder.configure(options);
    std::array<uint8_t, tunebox::MpegAudioDecoder::kMaxFrameBytes> frame{};
    std::size_t written = 0;
    frameDecoder.decodeFrame(bytes, frame, written);
    frameDecoder.decodeFrame(bytes, frame, written);
    return 0;
}
