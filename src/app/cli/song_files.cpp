#include "app/cli/song_files.h"

#include "app/cli/commands.h"
#include "app/cli/input_checks.h"
#include "lyrics/lyric_finder.h"
#include "lyrics/lyric_format.h"

namespace tunebox::cli {

std::optional<SongFiles> songFiles(const std::string& picked, const std::string& givenLyrics) {
    if (lyricFormatOf(picked) != LyricFormat::kUltraStar) {
        return SongFiles{picked, givenLyrics, {}};
    }
    // Asked before the song is read: a pipe would block the read for ever.
    if (const auto problem = inputRefusal(picked)) {
        refuse(picked, *problem, kExitBadInput);
        return std::nullopt;
    }
    const auto audio = ultraStarAudioFile(picked);
    if (!audio) {
        refuse(picked, "an UltraStar song that names no audio file (#MP3)", kExitBadInput);
        return std::nullopt;
    }
    return SongFiles{*audio, givenLyrics, picked};
}

}  // namespace tunebox::cli
