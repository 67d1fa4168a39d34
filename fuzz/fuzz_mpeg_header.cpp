// The frame header parsers over arbitrary bytes: the opener's first-frame
// search and the built-in decoder's frame length, free format included.

#include <cstdint>
#include <span>

#include "mp3/decoder/mpeg_frame_length.h"
#include "mp3/first_frame.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::span<const uint8_t> bytes(data, size);
    tunebox::MpegLayer3Format format;
    tunebox::MpegHeader header;
    uint32_t offset = 0;
    tunebox::mp3GetHeader(bytes, format, header, offset, tunebox::BufferEnd::endOfAudio);

    tunebox::MpegHeader decoderHeader;
    tunebox::mpegFrameLength(bytes, decoderHeader);
    uint32_t bitRate = 0;
    tunebox::mpegParseFirstFrame(bytes, decoderHeader, bitRate, offset);
    return 0;
}
