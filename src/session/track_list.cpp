#include "session/track_list.h"

namespace tunebox {
void applyPreset(WaveCtl& player, const TrackEntry& entry) {
    player.wavInit({.level = entry.p0,
                    .equaliserFlag = entry.p3,
                    .bands = entry.bands,
                    .centreRemovalFlag = entry.p1,
                    .reverbFlag = entry.p2,
                    .levelFlag = entry.p4,
                    .playRange = entry.range,
                    .keyTempo = entry.keyTempo,
                    .keyTempoMayMove = entry.keyTempoMayMove});
    player.wavSetRoomSize(entry.tenths);
}

int TrackList::get(int index, TrackEntry& entry) const {
    if (index < 0 || index >= count()) {
        return 0;
    }
    entry = entries_[static_cast<std::size_t>(index)];
    return 1;
}

int TrackList::remove(int index) {
    if (index < 0 || index >= count()) {
        return 0;
    }
    entries_.erase(entries_.begin() + index);
    return 1;
}

}  // namespace tunebox
