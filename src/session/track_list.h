#pragma once
// The accompaniment list: each entry is a file with the effect preset it is
// played with. Nothing edits the preset, so every entry carries the initial
// values; the dialog keeps at most the one current file in the list.

#include <cstdint>
#include <string>
#include <vector>

#include "effects/effect_control.h"
#include "effects/play_range.h"
#include "playback/player_settings.h"
#include "playback/wave_ctl.h"

namespace tunebox {

// The preset every entry starts with: flat bands, full level, a 0.9 room.
inline constexpr int32_t kInitialRoomTenths = 9;

struct TrackEntry {
    std::string path;
    BandValues bands = flatBands();
    int32_t p0 = kFullLevel;
    int32_t tenths = kInitialRoomTenths;
    int32_t p3 = 0;
    int32_t p1 = 0;
    int32_t p2 = 0;
    int32_t p4 = 0;
    PlayRange range{};
    uint32_t length = 0;  // native-PCM bytes, from the probe
    KeyTempo keyTempo{};
    // The key and tempo may move while it plays (see PlayerSettings).
    bool keyTempoMayMove = false;
};

// Hands the entry's preset to a player, for a file source.
void applyPreset(WaveCtl& player, const TrackEntry& entry);

class TrackList {
  public:
    int count() const { return static_cast<int>(entries_.size()); }
    // 1 with a copy of entry `index`, 0 when there is none.
    int get(int index, TrackEntry& entry) const;
    void append(const TrackEntry& entry) { entries_.push_back(entry); }
    // 1 when entry `index` existed and is gone; later entries move down.
    int remove(int index);

  private:
    std::vector<TrackEntry> entries_;
};

}  // namespace tunebox
