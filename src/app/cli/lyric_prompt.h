#pragma once
// The words on a terminal while a song plays (`play`, and `record` over an
// accompaniment): the line due now and the one after it, on two rows kept
// above the progress line and rewritten in place when the song moves on to
// the next line.

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include "app/cli/song_files.h"
#include "lyrics/lyric_sheet.h"
#include "playback/wave_ctl.h"

namespace tunebox::cli {

// The lyrics to show over `accompaniment`: the file given with --lyrics,
// else the UltraStar song picked for it, else the one found beside it.
// Nothing, with a note in `note`, when there are none to show on a
// terminal; a refusal of a given file sets `refused` too, while a song whose
// words cannot be read still plays. A file too big to be lyrics is passed over unread, so that
// the song starts at once, with a note that is a `warning`.
struct LyricChoice {
    std::optional<LyricSheet> sheet;
    std::string note;
    bool refused = false;
    bool warning = false;
};
LyricChoice chooseLyrics(const std::string& accompaniment, const std::string& givenPath,
                         const std::string& songPath = {});

class LyricPrompt {
  public:
    explicit LyricPrompt(LyricSheet sheet) : sheet_(std::move(sheet)) {}

    // Printed once before the first update: the two rows the lines go in.
    static std::string reserveRows() { return "\n\n"; }

    // What to print, from the start of the progress row, so that the rows
    // above show the lines due at `seconds`; empty while they already do.
    std::string update(double seconds);

    // The same for the moment `player` is heard at, its current run having
    // begun at byte `runStart`; empty once it has stopped.
    std::string follow(WaveCtl& player, uint32_t runStart);

  private:
    LyricSheet sheet_;
    // Empty until the rows are first written; then the line they show,
    // itself empty before the first line is due.
    std::optional<std::optional<std::size_t>> shown_;
};

// The prompt `play` and `record` show over a song: the lyrics of
// chooseLyrics, in `prompt`, with what was chosen said on a terminal. False,
// after one line on stderr, when a given file is refused.
bool openLyricPrompt(const SongFiles& files, std::optional<LyricPrompt>& prompt);

}  // namespace tunebox::cli
