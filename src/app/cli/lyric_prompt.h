#pragma once
// The words on a terminal while a song plays: the line due now and the one
// after it, on two rows kept above the progress line and rewritten in place
// when the song moves on to the next line.

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include "lyrics/lyric_sheet.h"

namespace tunebox::cli {

// The lyrics to show for `path`: the file given with --lyrics, else the one
// found beside the accompaniment. Nothing, with a note in `note`, when there
// are none to show on a terminal; a refusal of an explicit file sets
// `refused` too.
struct LyricChoice {
    std::optional<LyricSheet> sheet;
    std::string note;
    bool refused = false;
};
LyricChoice chooseLyrics(const std::string& accompaniment, const std::string& explicitPath);

class LyricPrompt {
  public:
    explicit LyricPrompt(LyricSheet sheet) : sheet_(std::move(sheet)) {}

    // Printed once before the first update: the two rows the lines go in.
    static std::string reserveRows() { return "\n\n"; }

    // What to print, from the start of the progress row, so that the rows
    // above show the lines due at `seconds`; empty while they already do.
    std::string update(double seconds);

  private:
    LyricSheet sheet_;
    // Empty until the rows are first written; then the line they show,
    // itself empty before the first line is due.
    std::optional<std::optional<std::size_t>> shown_;
};

}  // namespace tunebox::cli
