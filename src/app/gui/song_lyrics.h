#pragma once
// The lyrics of the song picked, read once when it is picked: timed lines
// (LRC, UltraStar) or a CD+G graphics stream, whichever the file holds.

#include <QString>
#include <cstdint>
#include <optional>
#include <vector>

#include "lyrics/lyric_sheet.h"

namespace tunebox::gui {

struct SongLyrics {
    std::optional<LyricSheet> sheet;  // else `cdg` holds the stream
    std::vector<uint8_t> cdg;
};

struct LyricsReading {
    std::optional<SongLyrics> lyrics;
    QString problem;  // why there are none, when a file was there to read
};

// Reads the lyrics file at `path`.
LyricsReading readSongLyrics(const QString& path);

// The lyrics file kept beside the accompaniment; empty when there is none.
QString lyricsBeside(const QString& accompaniment);

}  // namespace tunebox::gui
