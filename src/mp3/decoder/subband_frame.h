#pragma once
// The audio data of a Layer II frame: bit allocation, scale factor selection,
// scale factors and the quantised samples, requantised into the subband
// samples the polyphase synthesis takes. A frame holds 36 slots per channel,
// delivered as two runs of 18.

#include "mp3/decoder/bit_reader.h"
#include "mp3/decoder/frame_output.h"
#include "mp3/decoder/mpeg_header.h"

namespace tunebox {

inline constexpr int kLayer2Granules = 2;

// Reads the frame's audio data from `reader` (placed after the header and
// any check word). Subbands from `decodedSubbands` up come out silent.
// False when the data runs past the end of the frame.
bool readLayer2Frame(BitReader& reader, const MpegHeader& header, int decodedSubbands,
                     FrameSubbands& out);

}  // namespace tunebox
