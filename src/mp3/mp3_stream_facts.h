#pragma once
// What the MP3 opener learnt about a stream beyond what decoding needs: its
// first header, its "Xing"/"Info" tag and its average bit rate. `tunebox info`
// shows them; the player does not read them.

#include <cstdint>

#include "mp3/decoder/mpeg_header.h"
#include "mp3/decoder/xing_tag.h"

namespace tunebox {

struct Mp3StreamFacts {
    MpegHeader firstHeader;  // sample rate 0 when no MP3 stream was opened
    XingTag xing;
    uint32_t averageBitRate = 0;  // kbit/s over the whole stream
};

}  // namespace tunebox
