#pragma once
// The first MPEG audio frame of an MP3 file as the opener sees it: the wave
// format record that describes the stream to the converter, and the search
// that finds the frame in the file's first bytes.

#include <array>
#include <cstdint>
#include <span>

#include "core/wave_format.h"
#include "mp3/decoder/mpeg_header.h"

namespace tunebox {

// The 30-byte MPEG Layer III wave format record handed to the converter.
struct MpegLayer3Format {
    WaveFormat wave{kFormatMpegLayer3, 2, 44100, 128000, 1, 0, 12};
    uint16_t id = 1;
    uint32_t flags = 2;
    uint16_t blockSize = 417;  // the frame length in bytes
    uint16_t framesPerBlock = 1;
    uint16_t codecDelay = 1393;
};

// Whether the bytes after a buffer's last byte still belong to the audio.
enum class BufferEnd { endOfAudio, moreFollows };

// The record laid out as the converter reads it, zero-padded to 32 bytes.
std::array<uint8_t, 32> encodeLayer3Format(const MpegLayer3Format& format);

// Finds the first frame in `buffer` whose header is confirmed by the frames
// that follow it, and parses it. Returns 1 with the records and the frame's
// offset, or 0 when no such frame is found. `end` says whether the buffer
// holds the audio up to its end, where a short stream may stop.
int mp3GetHeader(std::span<const uint8_t> buffer, MpegLayer3Format& format, MpegHeader& header,
                 uint32_t& frameOffset, BufferEnd end);

}  // namespace tunebox
