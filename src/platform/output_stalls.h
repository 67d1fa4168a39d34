#pragma once
// The moments an output stood still while it had been given sound to play
// (it ran dry and was fed again, or its converter stopped): each is the
// position, in bytes played, at which the sound stopped. A stall shifts all
// that is heard after it by its length, which the positions show.

#include <array>
#include <cstdint>

namespace tunebox {

struct OutputStalls {
    uint32_t count = 0;     // since the device was opened or last reset
    uint32_t position = 0;  // where the stall asked for began (see StallRecord)
};

// The positions of an output's stalls, the most recent kKept of them.
class StallRecord {
  public:
    static constexpr uint32_t kKept = 16;

    void note(uint32_t position) { positions_[count_++ % kKept] = position; }
    void clear() { count_ = 0; }
    // The count, with the position of stall number `first` (from 0), or of
    // the oldest one kept when that one is gone; position 0 with none.
    OutputStalls since(uint32_t first) const {
        if (count_ == 0) {
            return {};
        }
        const uint32_t oldest = count_ > kKept ? count_ - kKept : 0;
        const uint32_t asked = first < oldest ? oldest : first < count_ ? first : count_ - 1;
        return {count_, positions_[asked % kKept]};
    }

  private:
    std::array<uint32_t, kKept> positions_{};
    uint32_t count_ = 0;
};

}  // namespace tunebox
