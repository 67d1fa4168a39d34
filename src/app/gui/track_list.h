#pragma once
// The accompaniment list: each entry is a file with the effect preset it is
// played with. Nothing edits the preset, so every entry carries the initial
// values; the dialog keeps at most the one current file in the list.

#include <cstdint>
#include <string>
#include <vector>

#include "effects/effect_control.h"
#include "effects/play_range.h"

namespace tunebox::gui {

inline constexpr int kInitialBandGain = 24;

struct TrackEntry {
    std::string path;
    BandValues bands = initialBands();
    int32_t p0 = 100;
    int32_t tenths = 9;
    int32_t p3 = 0;
    int32_t p1 = 0;
    int32_t p2 = 0;
    int32_t p4 = 0;
    PlayRange range{};
    uint32_t length = 0;  // native-PCM bytes, from the probe

  private:
    static BandValues initialBands() {
        BandValues bands;
        bands.fill(kInitialBandGain);
        return bands;
    }
};

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

}  // namespace tunebox::gui
