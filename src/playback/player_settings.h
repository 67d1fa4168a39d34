#pragma once
// What wavInit sets a player up with: the device's format and the starting
// record of the effect chain. The defaults are a track as the dialog first
// plays it: level 100, every band flat, every stage off, the whole file.

#include <cstdint>

#include "core/wave_format.h"
#include "effects/band_section.h"
#include "effects/effect_control.h"
#include "effects/key_tempo.h"

namespace tunebox {

inline constexpr int32_t kFullLevel = 100;  // percent

constexpr BandValues flatBands() {
    BandValues bands{};
    bands.fill(kFlatBandValue);
    return bands;
}

// The track entry's p0..p4 are level, centre removal, reverb, equaliser
// and level flag.
struct PlayerSettings {
    int32_t level = kFullLevel;
    int32_t equaliserFlag = 0;
    BandValues bands = flatBands();  // the ten equaliser gains
    int32_t centreRemovalFlag = 0;
    int32_t reverbFlag = 0;
    int32_t levelFlag = 0;
    PlayRange playRange{};
    // 1: a file is played, and the play range's stop position applies.
    uint32_t fileSource = 1;
    WaveFormat format = kNativeFormat;
    // Anything but neutral puts the key and tempo stage before the effects.
    KeyTempo keyTempo{};
    // The key and tempo will be moved while playing: the stage is made now
    // even for a neutral start, as no memory may be taken once audio flows.
    // At neutral it is bypassed all the same.
    bool keyTempoMayMove = false;
};

}  // namespace tunebox
