#pragma once
// The built-in decoder as the converter's first stage: blocks of the file are
// gathered in an accumulator, and one whole frame at a time is decoded into
// the stage's destination buffer.

#include <cstdint>
#include <memory>
#include <span>

#include "mp3/acm_stage.h"
#include "mp3/decoder/gapless_trim.h"
#include "mp3/decoder/mpeg_audio_decoder.h"

namespace tunebox {

struct ConversionState;

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

// Where the feed stands in the stream: the file position the next block
// continues from (a block elsewhere means the file was sought), and how far
// the frames have come since the stream was entered.
struct FeedPosition {
    int64_t firstBlock = -1;
    int64_t nextBlock = -1;
    uint64_t framesTaken = 0;  // since the start of the stream
    bool inStream = false;     // a frame was taken since the stream was entered
    uint32_t lastFrameLength = 0;
    uint32_t junkBytes = 0;         // skipped since the last frame
    uint32_t silentFramesOwed = 0;  // for skipped bytes, not yet delivered
    bool reservoirLost = false;     // with the skipped bytes' main data
};

struct BuiltinDecoderState {
    std::unique_ptr<MpegAudioDecoder> decoder;
    HeapBytes accumulator;  // kDecoderAccumulatorBytes
    uint32_t cvtsize = 0;   // bytes waiting in the accumulator
    DecodeInfo info;
    MpegHeader streamHeader;  // the first frame's: later frames must agree
    GaplessTrim trim;
    FeedPosition position;
    // Frames that could not be decoded; each left a frame of silence.
    uint32_t lostFrames = 0;
};

// Sets the decoder up from the first bytes of the stream. Returns 1 or 0
// (logged as "★mpegGetDecodeInfo失敗").
int mpegGetDecodeInfo(BuiltinDecoderState& state, std::span<const uint8_t> firstBytes);

// Opens the built-in path as the source's first stage. Returns 1 or 0.
int mp3OpenMyDecoder(ConversionState& source, std::span<const uint8_t> firstBytes);

// Tells the feed where in the file the next block was read, so that a seek
// starts the stream afresh.
void mp3NoteMyDecoderBlock(BuiltinDecoderState& state, int64_t position, uint32_t bytes);

// Whether a whole frame waits in the accumulator: the read then converts it
// before it reads on.
bool mp3MyDecoderHoldsFrame(const BuiltinDecoderState& state);

// Takes the block in the first stage's source buffer (it may be empty) into
// the accumulator and decodes the whole frames there, as many as the
// destination holds. A frame that cannot be decoded leaves a frame of
// silence and is counted. Returns 1; 0 only when the decoder is missing.
int mp3ConvertMyDecoder(ConversionState& source);

}  // namespace tunebox
