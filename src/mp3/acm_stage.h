#pragma once
// One conversion stage of a converted source: its formats, its buffers, the
// codec stream between them, and the bytes a conversion made beyond what the
// last read asked for. A source has two: the first turns the file's data into
// PCM, the second (when needed) turns that PCM into the native format.

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "platform/codec_manager.h"

namespace tunebox {

using HeapBytes = std::unique_ptr<uint8_t[]>;

struct AcmStage {
    HeapBytes leftover;  // converted bytes beyond the last request
    uint32_t oldbyte = 0;
    HeapBytes destinationFormat;  // kCodecMaxFormatBytes each
    HeapBytes sourceFormat;
    HeapBytes sourceBuffer;
    HeapBytes destinationBuffer;
    uint32_t destinationSize = 0;
    std::unique_ptr<CodecStream> stream;
    CodecStreamHeader acmhead;
    bool headerPrepared = false;
    uint32_t sourceBufferSize = 0;
    uint32_t leftoverSize = 0;
};

// The bytes one conversion takes from the source: the block size an MPEG
// Layer III record carries at byte 24 (one frame), or for PCM-family data,
// which carries none, a block of 2,048 sample frames.
uint32_t acmSourceBlockSize(const AcmStage& stage);

// Allocates both format records, zero-filled. Returns 1 or 0.
int mp3GetAcmFormatMem(AcmStage& stage);

// Sizes and allocates the buffers from the stream's output for one block.
int mp3GetAcmBufferMem(AcmStage& stage);

// Binds the stage's header to its buffers.
int mp3PrepareAcmHeader(AcmStage& stage);

// Opens the stage from `sourceFormat` (a whole source format block) towards
// `destination`, whose fields named by `flags` are kept; the codec chooses the
// rest. Every failure is logged and returns 0.
int mp3GetAcmOpen(AcmStage& stage, std::span<const uint8_t> sourceFormat,
                  const WaveFormat& destination, uint32_t flags);

// The built-in decoder's buffer set, from the sizes its output description
// gives: a source buffer of 10 x A, destination and leftover of 2 x B.
int mp3GetMyDecBufferMem(AcmStage& stage, uint32_t sizeA, uint32_t sizeB);

// The format the stage delivers.
WaveFormat acmDestinationFormat(const AcmStage& stage);

// Frees everything; safe to run twice.
void acmStageRelease(AcmStage& stage);

}  // namespace tunebox
