#pragma once
// The first MPEG audio frame of an MP3 file as the opener sees it: the
// header fields, the wave format record that describes the stream to the
// converter, and the search that finds the frame in the file's first bytes.

#include <array>
#include <cstdint>
#include <span>

#include "core/wave_format.h"

namespace tunebox {

// The header fields in their order. `layerBit` keeps only the low bit of the
// two-bit layer field; `layerField` keeps the whole field, so that Layer I and
// II files are named, timed and measured as what they are.
struct MpegHeader {
    uint32_t versionId = 0;  // 0 MPEG 2.5, 1 reserved, 2 MPEG-2, 3 MPEG-1
    uint32_t layerBit = 0;
    uint32_t protection = 0;
    uint32_t bitRateIndex = 0;
    uint32_t sampleRateIndex = 0;
    uint32_t padding = 0;
    uint32_t privateBit = 0;
    uint32_t channelMode = 0;
    uint32_t modeExtension = 0;
    uint32_t copyright = 0;
    uint32_t original = 0;
    uint32_t emphasis = 0;
    uint32_t bitRate = 0;  // kbit/s
    uint32_t sampleRate = 0;
    uint32_t samplesPerFrame = 0;
    uint32_t layerField = 0;  // 3 Layer I, 2 Layer II, 1 Layer III
};

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

// Parses the header at the start of `bytes`. False without a sync, or when a
// field is reserved or the frame is free format (no bit rate to time it by).
bool mpegParseHeader(std::span<const uint8_t> bytes, MpegHeader& header);

// The whole frame's length in bytes, its padding slot included.
uint32_t mpegFrameBytes(const MpegHeader& header);

// The layer as it is named: 1, 2 or 3.
uint32_t mpegLayerNumber(const MpegHeader& header);

// Whether `next` can follow `first` in one stream: the same version, layer,
// sample rate and channel count.
bool mpegSameStream(const MpegHeader& first, const MpegHeader& next);

// The record laid out as the converter reads it, zero-padded to 32 bytes.
std::array<uint8_t, 32> encodeLayer3Format(const MpegLayer3Format& format);

// Finds the first frame in `buffer` whose header is confirmed by the frames
// that follow it, and parses it. Returns 1 with the records and the frame's
// offset, or 0 when no such frame is found. `end` says whether the buffer
// holds the audio up to its end, where a short stream may stop.
int mp3GetHeader(std::span<const uint8_t> buffer, MpegLayer3Format& format, MpegHeader& header,
                 uint32_t& frameOffset, BufferEnd end);

}  // namespace tunebox
