#pragma once
// Where a song's lyrics are, when nobody said: singers keep them beside the
// accompaniment under the same name, and an UltraStar song names its audio
// file itself.

#include <optional>
#include <string>

namespace tunebox {

// The lyrics file kept beside `accompaniment`: "Song.lrc", else an UltraStar
// "Song.txt" whose #MP3 names the accompaniment's file, else "Song.cdg"
// (each also with its extension in capitals). Nothing when there is none.
std::optional<std::string> findLyricsFor(const std::string& accompaniment);

// The audio file an UltraStar song at `songPath` names in #MP3, in the song's
// folder; nothing when the file is no such song or names no audio.
std::optional<std::string> ultraStarAudioFile(const std::string& songPath);

}  // namespace tunebox
