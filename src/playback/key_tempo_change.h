#pragma once
// A change of key or tempo a player applied while it played, and where: from
// its output block `block` on, the blocks counted from the opening of the
// file (the first one is block 0). A player set up the same way and given
// the same changes before the same blocks fills them bit for bit alike.

#include <cstdint>
#include <vector>

#include "effects/key_tempo.h"

namespace tunebox {

struct KeyTempoChange {
    uint32_t block = 0;
    KeyTempo keyTempo{};

    bool operator==(const KeyTempoChange&) const = default;
};

// In the order they were made; blocks never go down.
using KeyTempoChanges = std::vector<KeyTempoChange>;

}  // namespace tunebox
