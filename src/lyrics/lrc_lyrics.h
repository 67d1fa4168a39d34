#pragma once
// LRC lyrics: lines led by one or more "[mm:ss.xx]" time tags, header tags
// such as "[ti:Title]", "[ar:Artist]" and "[offset:+500]", and in the
// enhanced form "<mm:ss.xx>" before each timed word.

#include <string_view>

#include "lyrics/lyric_sheet.h"

namespace tunebox {

// Reads the bytes of an LRC file. A line with several time tags is due once
// per tag; its word times move with it. A positive offset (milliseconds)
// makes every line due that much earlier, never before the start. Lines
// without a time tag are not lyrics and are passed over; a file with no
// timed line at all is refused.
LyricReading parseLrc(std::string_view bytes);

}  // namespace tunebox
