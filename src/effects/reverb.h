#pragma once
// Stereo reverb: six parallel damped comb filters and two series all-pass
// filters per channel, fed from the mono sum of the input.

#include <array>
#include <cstdint>
#include <memory>

namespace tunebox {

inline constexpr int kCombSlots = 8;  // per channel; the first kCombsUsed run
inline constexpr int kCombsUsed = 6;
inline constexpr int kAllpassSlots = 4;  // per channel; the first kAllpassesUsed run
inline constexpr int kAllpassesUsed = 2;

// Slot arrays hold the left channel's filters first, then the right's.
struct Reverb {
    float gain = 0;  // into the filters; 0 while frozen
    float roomSize = 0;
    float roomSizeInEffect = 0;
    float damping = 0;
    float dampingInEffect = 0;
    float wet = 0;
    float wet1 = 0;
    float wet2 = 0;
    float dry = 0;
    float width = 0;
    float mode = 0;  // 0.5 or more freezes the tail
    float clearRequest = 0;
    int32_t initialisedWord = 0;
    float allpassFeedback = 0;
    float combFeedback = 0;
    float combDamping1 = 0;
    float combDamping2 = 0;
    std::array<float, 2 * kCombSlots> combStore{};
    std::array<std::unique_ptr<float[]>, 2 * kCombSlots> combLine;
    std::array<int32_t, 2 * kCombSlots> combPosition{};
    std::array<std::unique_ptr<float[]>, 2 * kAllpassSlots> allpassLine;
    std::array<int32_t, 2 * kAllpassSlots> allpassPosition{};
    std::array<int32_t, 2 * kCombSlots> combLength{};
    std::array<int32_t, 2 * kAllpassSlots> allpassLength{};
};

// Resets the record, allocates the delay lines and applies the default
// settings. On an allocation failure it logs, keeps the lines it already has
// and returns 0 (the reverb then leaves blocks alone).
int reverb_init(Reverb& reverb);
void reverb_free(Reverb& reverb);

void reverb_set_room_size(Reverb& reverb, float value);
void reverb_set_damping(Reverb& reverb, float value);
void reverb_set_wet(Reverb& reverb, float value);
void reverb_set_dry(Reverb& reverb, float value);
void reverb_set_width(Reverb& reverb, float value);
void reverb_set_mode(Reverb& reverb, float value);
void reverb_set_clear_request(Reverb& reverb, float value);

// Recomputes the derived values after a setting changed.
void reverb_update(Reverb& reverb);
// Silences every delay line, unless the tail is frozen.
void reverb_clear(Reverb& reverb);

// True once every delay line the reverb runs is allocated.
bool reverb_ready(const Reverb& reverb);

// Reverberates `length` bytes of 16-bit stereo in place, leaving the float
// results in `outLeft`/`outRight`; returns the peak magnitude. A reverb that
// is not ready leaves the block alone and returns 0.
float reverb_process(Reverb& reverb, int16_t* block, uint32_t length, float* outLeft,
                     float* outRight);

}  // namespace tunebox
