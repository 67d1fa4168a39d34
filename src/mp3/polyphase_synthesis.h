#pragma once
// Polyphase synthesis filter bank: 32 subband samples in, 32 PCM samples out,
// keeping the standard's 1024-value V history per channel.

#include <array>
#include <cstdint>

namespace tunebox {

class PolyphaseSynthesis {
  public:
    // Writes 32 clipped 16-bit samples to out[0], out[stride], ...
    void synthesize(const float* subbands, int16_t* out, int stride);
    void reset();

  private:
    static constexpr int kHistory = 1024;
    std::array<float, 2 * kHistory> v_{};
    int offset_ = 0;
};

}  // namespace tunebox
