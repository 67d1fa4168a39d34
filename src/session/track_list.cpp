#include "session/track_list.h"

namespace tunebox {
namespace {

constexpr uint32_t kFileSource = 1;

}  // namespace

void applyPreset(WaveCtl& player, const TrackEntry& entry) {
    player.wavInit(nullptr, entry.p0, entry.bands, entry.p3, entry.p1, entry.p2, entry.p4,
                   entry.range, kFileSource);
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
