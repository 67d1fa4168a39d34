#pragma once
// The files behind a song picked to play or sing over: an UltraStar song
// stands for the audio file its #MP3 names, and brings its own lyrics.

#include <optional>
#include <string>

namespace tunebox::cli {

struct SongFiles {
    std::string audio;
    std::string givenLyrics;  // from --lyrics; empty when none was given
    std::string songLyrics;   // the UltraStar song picked, for its words
};

// The files for `picked`. Nothing, after one line on stderr, for an
// UltraStar song that cannot be read or names no audio file.
std::optional<SongFiles> songFiles(const std::string& picked, const std::string& givenLyrics);

}  // namespace tunebox::cli
