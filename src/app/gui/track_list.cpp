#include "app/gui/track_list.h"

namespace tunebox::gui {

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

}  // namespace tunebox::gui
