#pragma once
// How the accompaniment player is set up for a track, and the same player
// run without a device: a take mixed again hears exactly the blocks that the
// take heard, decoded, cut and coloured by the same code.

#include <cstdint>
#include <optional>
#include <vector>

#include "playback/key_tempo_change.h"
#include "playback/source_options.h"
#include "playback/wave_ctl.h"
#include "session/track_list.h"

namespace tunebox {

// The buffer geometry and the track's preset; the next wavOpenFile plays it.
void setUpAccompanimentPlayer(WaveCtl& player, const TrackEntry& track);

// Every byte the player hands to the device for `track` played from byte
// `start`, up to its last block, with the key and tempo moved by `changes`
// at their blocks; null when the track cannot be opened.
std::optional<std::vector<uint8_t>> renderAccompaniment(const TrackEntry& track, uint32_t start,
                                                        const SourceOptions& options,
                                                        const KeyTempoChanges& changes = {});

}  // namespace tunebox
