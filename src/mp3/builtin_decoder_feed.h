#pragma once
// The built-in decoder as the converter's first stage: blocks of the file are
// gathered in an accumulator, and one whole frame at a time is decoded into
// the stage's destination buffer.

#include <cstdint>
#include <memory>
#include <span>

#include "mp3/acm_stage.h"
#include "mp3/mpeg_audio_decoder.h"

namespace tunebox {

struct AudioSource;

inline constexpr uint32_t kDecoderAccumulatorBytes = 102400;

// What the decoder delivers, and the two sizes the buffers are made from:
// A bounds one frame of the file, B is one frame of output.
struct DecodeInfo {
    uint32_t channels = 0;
    uint32_t sampleRate = 0;
    uint32_t bitsPerSample = 0;
    uint32_t sizeA = 0;
    uint32_t sizeB = 0;
};

struct BuiltinDecoderState {
    std::unique_ptr<MpegAudioDecoder> decoder;
    HeapBytes accumulator;  // kDecoderAccumulatorBytes
    uint32_t cvtsize = 0;   // bytes waiting in the accumulator
    DecodeInfo info;
};

// Sets the decoder up from the first bytes of the stream. Returns 1 or 0
// (logged as "★mpegGetDecodeInfo失敗").
int mpegGetDecodeInfo(BuiltinDecoderState& state, std::span<const uint8_t> firstBytes);

// Opens the built-in path as the source's first stage. Returns 1 or 0.
int mp3OpenMyDecoder(AudioSource& source, std::span<const uint8_t> firstBytes);

// Takes the block in the first stage's source buffer into the accumulator and
// decodes one frame when a whole one is there. Returns 1, or 0 when a frame
// could not be found or decoded.
int mp3ConvertMyDecoder(AudioSource& source);

}  // namespace tunebox
