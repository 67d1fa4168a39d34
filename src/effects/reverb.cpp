#include "effects/reverb.h"

#include <algorithm>
#include <string>

#include "core/diagnostic_log.h"
#include "effects/sample_clip.h"
#include "core/heap.h"

namespace tunebox {
namespace {

constexpr std::array<int32_t, kCombsUsed> kCombLengthsLeft{1116, 1188, 1277, 1356, 1422, 1491};
// The right combs run 23 samples longer to decorrelate the channels; the
// all-passes deliberately share their lengths.
constexpr int32_t kStereoSpread = 23;
constexpr std::array<int32_t, kAllpassesUsed> kAllpassLengths{556, 441};
constexpr float kInputGain = 0.03f;
constexpr float kFreezeMode = 0.5f;

constexpr int leftSlot(int index) {
    return index;
}
constexpr int rightComb(int index) {
    return kCombSlots + index;
}
constexpr int rightAllpass(int index) {
    return kAllpassSlots + index;
}

bool frozen(const Reverb& reverb) {
    return reverb.mode >= kFreezeMode;
}

bool allocateLine(std::unique_ptr<float[]>& line, int32_t length, const char* name) {
    line = heapAllocZeroed<float>(static_cast<std::size_t>(length));
    if (!line) {
        logAlways(std::string("ﾒﾓﾘ確保失敗:reverb_init:") + name);
        return false;
    }
    return true;
}

bool allocateLines(Reverb& reverb) {
    for (int k = 0; k < kCombsUsed; ++k) {
        if (!allocateLine(reverb.combLine[leftSlot(k)], reverb.combLength[leftSlot(k)],
                          "x_bufcombL") ||
            !allocateLine(reverb.combLine[rightComb(k)], reverb.combLength[rightComb(k)],
                          "x_bufcombR")) {
            return false;
        }
    }
    // Both all-pass lines report under the left one's name.
    for (int k = 0; k < kAllpassesUsed; ++k) {
        if (!allocateLine(reverb.allpassLine[leftSlot(k)], reverb.allpassLength[leftSlot(k)],
                          "x_bufallpassL") ||
            !allocateLine(reverb.allpassLine[rightAllpass(k)],
                          reverb.allpassLength[rightAllpass(k)], "x_bufallpassL")) {
            return false;
        }
    }
    return true;
}

void setLengths(Reverb& reverb) {
    for (int k = 0; k < kCombsUsed; ++k) {
        reverb.combLength[leftSlot(k)] = kCombLengthsLeft[k];
        reverb.combLength[rightComb(k)] = kCombLengthsLeft[k] + kStereoSpread;
    }
    for (int k = 0; k < kAllpassesUsed; ++k) {
        reverb.allpassLength[leftSlot(k)] = kAllpassLengths[k];
        reverb.allpassLength[rightAllpass(k)] = kAllpassLengths[k];
    }
}

// Calls visit(line, length, position) for every comb and all-pass line in use.
template <class Record, class Visit>
void forEachUsedLine(Record& reverb, Visit visit) {
    for (int slot : {0, kCombSlots}) {
        for (int k = 0; k < kCombsUsed; ++k) {
            visit(reverb.combLine[slot + k], reverb.combLength[slot + k],
                  reverb.combPosition[slot + k]);
        }
    }
    for (int slot : {0, kAllpassSlots}) {
        for (int k = 0; k < kAllpassesUsed; ++k) {
            visit(reverb.allpassLine[slot + k], reverb.allpassLength[slot + k],
                  reverb.allpassPosition[slot + k]);
        }
    }
}

// Copied out of the record so that the compiler can keep them in registers
// while the delay lines are written.
struct Coefficients {
    float gain;
    float wet1;
    float wet2;
    float dry;
    float allpassFeedback;
    float combFeedback;
    float combDamping1;
    float combDamping2;
};

inline float combStep(float& slot, float& store, float input, const Coefficients& c) {
    const float out = slot;
    store = store * c.combDamping1 + out * c.combDamping2;
    slot = input + store * c.combFeedback;
    return out;
}

inline float allpassStep(float& slot, float input, float feedback) {
    const float buffered = slot;
    slot = input + buffered * feedback;
    return buffered - input;
}

// The filters that one channel runs, as plain pointers at their current
// positions so that the inner loop needs no wrap test.
struct ChannelTaps {
    float* comb[kCombsUsed];
    float* allpass[kAllpassesUsed];
};

ChannelTaps tapsAt(Reverb& reverb, int combBase, int allpassBase) {
    ChannelTaps taps;
    for (int k = 0; k < kCombsUsed; ++k) {
        taps.comb[k] = reverb.combLine[combBase + k].get() + reverb.combPosition[combBase + k];
    }
    for (int k = 0; k < kAllpassesUsed; ++k) {
        taps.allpass[k] =
            reverb.allpassLine[allpassBase + k].get() + reverb.allpassPosition[allpassBase + k];
    }
    return taps;
}

// Frames until the first filter reaches the end of its line.
uint32_t framesBeforeWrap(const Reverb& reverb, uint32_t limit) {
    forEachUsedLine(reverb, [&limit](const auto&, int32_t length, int32_t position) {
        limit = std::min(limit, static_cast<uint32_t>(length - position));
    });
    return limit;
}

void advanceAll(Reverb& reverb, uint32_t frames) {
    forEachUsedLine(reverb, [frames](const auto&, int32_t length, int32_t& position) {
        position += static_cast<int32_t>(frames);
        if (position >= length) {
            position = 0;
        }
    });
}

float runCombs(const ChannelTaps& taps, float* store, uint32_t i, float input,
               const Coefficients& c) {
    float sum = combStep(taps.comb[0][i], store[0], input, c);
    for (int k = 1; k < kCombsUsed; ++k) {
        sum += combStep(taps.comb[k][i], store[k], input, c);
    }
    return sum;
}

float runAllpasses(const ChannelTaps& taps, uint32_t i, float input, float feedback) {
    float out = input;
    for (int k = 0; k < kAllpassesUsed; ++k) {
        out = allpassStep(taps.allpass[k][i], out, feedback);
    }
    return out;
}

// Reverberates frames [first, first + count) during which no line wraps.
void processRun(Reverb& reverb, const int16_t* block, uint32_t first, uint32_t count,
                float* outLeft, float* outRight) {
    const ChannelTaps left = tapsAt(reverb, 0, 0);
    const ChannelTaps right = tapsAt(reverb, kCombSlots, kAllpassSlots);
    float storeLeft[kCombsUsed];
    float storeRight[kCombsUsed];
    std::copy_n(reverb.combStore.begin(), kCombsUsed, storeLeft);
    std::copy_n(reverb.combStore.begin() + kCombSlots, kCombsUsed, storeRight);
    const Coefficients settings{reverb.gain,
                                reverb.wet1,
                                reverb.wet2,
                                reverb.dry,
                                reverb.allpassFeedback,
                                reverb.combFeedback,
                                reverb.combDamping1,
                                reverb.combDamping2};
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t frame = first + i;
        const float inLeft = block[2 * frame];
        const float inRight = block[2 * frame + 1];
        const float input = (inLeft + inRight) * settings.gain;
        float wetLeft = runCombs(left, storeLeft, i, input, settings);
        float wetRight = runCombs(right, storeRight, i, input, settings);
        wetLeft = runAllpasses(left, i, wetLeft, settings.allpassFeedback);
        wetRight = runAllpasses(right, i, wetRight, settings.allpassFeedback);
        outLeft[frame] = wetLeft * settings.wet1 + wetRight * settings.wet2 + inLeft * settings.dry;
        outRight[frame] =
            wetRight * settings.wet1 + wetLeft * settings.wet2 + inRight * settings.dry;
    }
    std::copy_n(storeLeft, kCombsUsed, reverb.combStore.begin());
    std::copy_n(storeRight, kCombsUsed, reverb.combStore.begin() + kCombSlots);
    advanceAll(reverb, count);
}

}  // namespace

int reverb_init(Reverb& reverb) {
    reverb = Reverb{};
    setLengths(reverb);
    if (!allocateLines(reverb)) {
        return 0;
    }
    reverb.allpassFeedback = 0.5f;
    reverb.initialisedWord = 1;
    reverb_set_wet(reverb, 0.2f);
    reverb_set_room_size(reverb, 0.9f);
    reverb_set_dry(reverb, 0.5f);
    reverb_set_damping(reverb, 0.2f);
    reverb_set_width(reverb, 0.9f);
    reverb_set_mode(reverb, 0.0f);
    reverb_set_clear_request(reverb, 0.0f);
    reverb_clear(reverb);
    return 1;
}

void reverb_free(Reverb& reverb) {
    for (auto& line : reverb.combLine) {
        line.reset();
    }
    for (auto& line : reverb.allpassLine) {
        line.reset();
    }
}

void reverb_set_room_size(Reverb& reverb, float value) {
    reverb.roomSize = value * 0.28f + 0.7f;
    reverb_update(reverb);
}

void reverb_set_damping(Reverb& reverb, float value) {
    reverb.damping = value * 0.4f;
    reverb_update(reverb);
}

void reverb_set_wet(Reverb& reverb, float value) {
    reverb.wet = value * 3.0f;
    reverb_update(reverb);
}

void reverb_set_dry(Reverb& reverb, float value) {
    reverb.dry = value * 2.0f;
}

void reverb_set_width(Reverb& reverb, float value) {
    reverb.width = value;
    reverb_update(reverb);
}

void reverb_set_mode(Reverb& reverb, float value) {
    reverb.mode = value;
    reverb_update(reverb);
}

void reverb_set_clear_request(Reverb& reverb, float value) {
    reverb.clearRequest = value;
    if (value != 0.0f) {
        reverb_clear(reverb);
    }
}

void reverb_update(Reverb& reverb) {
    reverb.wet1 = reverb.wet * (reverb.width / 2.0f + 0.5f);
    reverb.wet2 = reverb.wet * ((1.0f - reverb.width) / 2.0f);
    if (frozen(reverb)) {
        reverb.roomSizeInEffect = 1.0f;
        reverb.dampingInEffect = 0.0f;
        reverb.gain = 0.0f;
    } else {
        reverb.roomSizeInEffect = reverb.roomSize;
        reverb.dampingInEffect = reverb.damping;
        reverb.gain = kInputGain;
    }
    reverb.combFeedback = reverb.roomSizeInEffect;
    reverb.combDamping1 = reverb.dampingInEffect;
    reverb.combDamping2 = 1.0f - reverb.dampingInEffect;
}

void reverb_clear(Reverb& reverb) {
    if (frozen(reverb)) {
        return;
    }
    forEachUsedLine(reverb, [](const std::unique_ptr<float[]>& line, int32_t length, int32_t) {
        if (line) {
            std::fill_n(line.get(), length, 0.0f);
        }
    });
}

bool reverb_ready(const Reverb& reverb) {
    bool ready = true;
    forEachUsedLine(reverb, [&ready](const std::unique_ptr<float[]>& line, int32_t, int32_t) {
        ready = ready && line != nullptr;
    });
    return ready;
}

float reverb_process(Reverb& reverb, int16_t* block, uint32_t length, float* outLeft,
                     float* outRight) {
    if (!reverb_ready(reverb)) {
        return 0.0f;
    }
    const uint32_t frames = length / 4;
    for (uint32_t done = 0; done < frames;) {
        const uint32_t run = framesBeforeWrap(reverb, frames - done);
        processRun(reverb, block, done, run, outLeft, outRight);
        done += run;
    }
    return storeClippedFrames(block, outLeft, outRight, frames);
}

}  // namespace tunebox
