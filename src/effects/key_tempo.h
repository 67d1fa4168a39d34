#pragma once
// How the accompaniment is moved in key and tempo. The neutral setting (no
// shift, full tempo) leaves the player exactly as it was without the stage.

#include <cmath>
#include <cstdint>

namespace tunebox {

inline constexpr int kMaxSemitones = 6;
inline constexpr int kMaxCents = 50;
inline constexpr int kSlowestTempo = 70;   // percent
inline constexpr int kFastestTempo = 130;  // percent
inline constexpr int kFullTempo = 100;

struct KeyTempo {
    int semitones = 0;  // -6..+6
    int cents = 0;      // -50..+50, on top of the semitones
    int tempoPercent = kFullTempo;
    bool preserveFormants = false;

    bool operator==(const KeyTempo&) const = default;
    bool neutral() const { return semitones == 0 && cents == 0 && tempoPercent == kFullTempo; }
    double pitchScale() const { return std::exp2((semitones * 100 + cents) / 1200.0); }
    // Output over input length: a slower tempo makes more output.
    double timeRatio() const { return double(kFullTempo) / tempoPercent; }
};

}  // namespace tunebox
