#pragma once
// What makes a run of bytes an MPEG audio stream rather than noise that
// happens to hold a sync word: frame headers that follow one another, each at
// the end its predecessor's header computes, and agree on the stream.

#include <cstddef>
#include <cstdint>
#include <span>

#include "mp3/first_frame.h"

namespace tunebox {

// Consecutive agreeing headers that make a stream. Random bytes give a
// passable header about once in 5,600 positions and a second one exactly at
// its frame end far more rarely still; three leave no doubt.
inline constexpr int kAgreeingHeaders = 3;

// Whether a tag that ends the audio (ID3v1, APE, Lyrics3, an appended ID3v2)
// begins at the start of `bytes`.
bool startsWithTag(std::span<const uint8_t> bytes);

// Whether the frame whose header `first` stands at `offset` in `buffer`
// starts a stream: the next headers up to `kAgreeingHeaders` agree with it,
// or the frames before them end exactly at the end of the audio (`end` says
// whether the buffer's end is that) or at a tag.
bool mpegChainConfirmed(std::span<const uint8_t> buffer, std::size_t offset,
                        const MpegHeader& first, BufferEnd end);

}  // namespace tunebox
