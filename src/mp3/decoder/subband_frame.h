#pragma once
// The audio data of a Layer I or II frame: bit allocation, scale factors
// (in Layer II with their selection info) and the quantised samples,
// requantised into the subband samples the polyphase synthesis takes. A
// Layer I frame holds 12 slots per channel, delivered as one run; a Layer II
// frame 36, delivered as two runs of 18.

#include "mp3/decoder/bit_reader.h"
#include "mp3/decoder/frame_output.h"
#include "mp3/decoder/mpeg_header.h"

namespace tunebox {

struct SlotRuns {
    int runs = 0;
    int slots = 0;  // per run
};

SlotRuns subbandFrameRuns(const MpegHeader& header);

// Reads the frame's audio data from `reader` (placed after the header and
// any check word). Subbands from `decodedSubbands` up come out silent.
// False when the data runs past the end of the frame or names a forbidden
// allocation.
bool readSubbandFrame(BitReader& reader, const MpegHeader& header, int decodedSubbands,
                      FrameSubbands& out);

}  // namespace tunebox
