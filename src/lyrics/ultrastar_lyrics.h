#pragma once
// UltraStar songs: a ".txt" of "#KEY:value" headers (#TITLE, #ARTIST, #MP3,
// #BPM, #GAP, #RELATIVE) and one note a line, ": beat length pitch syllable"
// (golden "*", free "F", rap "R" and "G" alike), "- beat" ending a lyric line,
// "E" ending the song, and "P1"/"P2" marking the voices of a duet.

#include <string_view>

#include "lyrics/lyric_sheet.h"

namespace tunebox {

// One beat of a song whose #BPM is `bpm`, in seconds: the header counts
// quarter notes, the notes sixteenths.
double ultraStarBeatSeconds(double bpm);

// Reads the bytes of an UltraStar song. A note is due #GAP milliseconds plus
// its beats after the start; in relative mode each line counts its beats from
// where the line break before it said. Only the first voice of a duet is
// taken. A song without a usable #BPM or without notes is refused.
LyricReading parseUltraStar(std::string_view bytes);

}  // namespace tunebox
