#pragma once
// Mixes a take again from its voice file and the accompaniment noted in it,
// with the voice moved by a nudge: a take that came out early or late is put
// right without singing it again. A nudge of 0 gives the take byte for byte,
// since the accompaniment is played and the two are mixed by the very code
// that recorded it.

#include <cstdint>
#include <string>

namespace tunebox {

// The largest nudge either way, in milliseconds: beyond it the voice belongs
// to another part of the song, not to a slip of the timing.
inline constexpr double kLargestNudgeMs = 10000.0;

// Whole frames of 1/44,100 s, to the nearest: 10 ms is 441 frames.
int32_t nudgeFrames(double milliseconds);

struct RemixRequest {
    std::string take;    // its voice file lies beside it
    std::string output;  // may be the take: replaced only once all is written
    int32_t nudge = 0;   // frames; positive puts the voice later
};

// Empty when the output was written; otherwise one line saying why not, and
// the output is as it was.
std::string remixTake(const RemixRequest& request);

}  // namespace tunebox
