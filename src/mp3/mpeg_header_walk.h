#pragma once
// A walk over an MP3 file's frame headers from the first frame to the end of
// the audio, for files that do not say how many frames they hold: it counts
// samples and bytes, so that a variable bit rate gives a true length and an
// average rate. The walk reads large blocks and gives up at a long stretch
// without a frame, so trailing junk or zeros cost little.

#include <cstdint>

#include "mp3/decoder/mpeg_header.h"
#include "platform/riff_file.h"

namespace tunebox {

// A stretch this long without a confirmed frame ends the walk.
inline constexpr int64_t kLongestFrameGap = 65536;

struct MpegFrameWalk {
    uint64_t frames = 0;
    uint64_t samples = 0;     // per channel
    uint64_t frameBytes = 0;  // of the frames counted, damage between them left out
    bool constantBitRate = true;
};

// Walks the frames of `file` from the frame with header `first` at
// `firstFrame` to `audioEnd`. Damage is stepped over to the next confirmed
// frame; a frame cut short by the end is not counted. The file position is
// left anywhere.
MpegFrameWalk mpegWalkFrames(RiffFile& file, int64_t firstFrame, int64_t audioEnd,
                             const MpegHeader& first);

}  // namespace tunebox
