#pragma once
// Where in the song the singer is. The player reads its file a ring of
// buffers ahead of what the device plays, so anything that must keep time
// with what is heard (lyrics, above all) asks the device how much it has
// played, never the player where it has read to.

#include <cstdint>
#include <optional>

#include "playback/wave_ctl.h"

namespace tunebox {

// The byte of the accompaniment whose sound `player` plays now, its current
// run having begun at byte `runStart` of the file (as adjustStartPosition
// gives it). It holds still through a pause. Nothing once the player has
// stopped: its closed device no longer knows.
std::optional<uint32_t> heardSongPosition(WaveCtl& player, uint32_t runStart);

// The same in seconds from the start of the accompaniment.
std::optional<double> heardSongSeconds(WaveCtl& player, uint32_t runStart);

}  // namespace tunebox
