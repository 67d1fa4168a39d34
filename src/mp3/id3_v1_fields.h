#pragma once
// The texts of an ID3v1 tag, for files that carry no ID3v2 tag or leave some
// of its texts out. The opener keeps the tag raw; `tunebox info` reads it here.

#include <array>
#include <cstdint>

#include "mp3/id3_tag.h"

namespace tunebox {

// Fills the texts, year and track of `tag` that are still empty or 0 from
// the 128-byte block (fixed-width fields, padded with NULs or spaces; the
// track in the comment's last byte after a NUL, as ID3v1.1 puts it).
void id3FillFromV1(Id3Tag& tag, const std::array<uint8_t, kId3v1Bytes>& block);

}  // namespace tunebox
