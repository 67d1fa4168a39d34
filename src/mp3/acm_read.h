#pragma once
// The read step of a converted source: hands the player exactly the native
// PCM bytes it asks for, converting block after block of the file through one
// or two stages and keeping what a conversion made beyond the request.

#include <atomic>
#include <cstdint>

#include "mp3/acm_stage.h"
#include "platform/riff_file.h"

namespace tunebox {

struct ConversionState;

// Every byte delivered by a converted read since the program started.
extern std::atomic<uint64_t> convertedBytesDelivered;

// Reads up to `requested` bytes into `destination`; `count` becomes the bytes
// delivered, and `endFlag` 1 when the source ran out. Returns 1, or 0 when a
// conversion failed (with what came before it in `count`).
int mp3AcmRead(RiffFile& file, uint8_t* destination, uint32_t& count, uint32_t requested,
               ConversionState& source, uint32_t& endFlag);

// Serves the request from the stage's leftover first. Returns 1 when the
// leftover covered all of it; otherwise `produced` is what it gave.
int mp3AcmReadOldBuf(AcmStage& stage, uint8_t* destination, uint32_t requested, uint32_t& produced);

// Places the stage's last conversion after the `produced` bytes already
// delivered, moving what passes the request into the leftover. Returns 1 when
// the read must go on with another block.
int mp3AcmCvtBufSet(AcmStage& stage, uint8_t* destination, uint32_t requested, uint32_t& endFlag,
                    uint32_t& produced);

}  // namespace tunebox
