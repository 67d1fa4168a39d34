#include "mp3/polyphase_synthesis.h"

#include <algorithm>
#include <cmath>

#include "mp3/fast_dct32.h"
#include "mp3/synthesis_window.h"

namespace tunebox {
namespace {

// The window, scaled to 16-bit full scale.
const std::array<float, 512>& scaledWindow() {
    static const std::array<float, 512> window = [] {
        std::array<float, 512> built{};
        const auto& d = synthesisWindow();
        for (int i = 0; i < 512; ++i) {
            built[i] = static_cast<float>(d[i] * 32768.0);
        }
        return built;
    }();
    return window;
}

// Rounds half away from zero. Clipping is symmetric, as in the reference
// decoder of the compliance streams: a full negative peak gives -32767.
int16_t toPcm(float value) {
    const float clipped = std::min(std::max(value, -32767.0f), 32767.0f);
    return static_cast<int16_t>(clipped + std::copysign(0.5f, clipped));
}

}  // namespace

void PolyphaseSynthesis::reset() {
    v_ = {};
    offset_ = 0;
}

// The matrixing V[i] = sum of cos((16 + i)(2k + 1) pi / 64) S[k] is a
// 32-point DCT-II X of S read out with symmetries: V[0..15] = X[16..31],
// V[16] = 0, V[17..47] = -X[31..1], V[48..63] = -X[0..15].
void PolyphaseSynthesis::synthesize(const float* subbands, int16_t* out, int stride) {
    std::array<float, 32> x;
    std::copy(subbands, subbands + 32, x.begin());
    dct32(x.data());
    offset_ = (offset_ - 64) & (kHistory - 1);
    float* v = &v_[offset_];
    for (int i = 0; i < 16; ++i) {
        v[i] = x[16 + i];
    }
    v[16] = 0.0f;
    for (int i = 17; i < 48; ++i) {
        v[i] = -x[48 - i];
    }
    for (int i = 48; i < 64; ++i) {
        v[i] = -x[i - 48];
    }
    // The history is kept twice over so the window reads never wrap.
    std::copy(v, v + 64, &v_[offset_ + kHistory]);
    const std::array<float, 512>& window = scaledWindow();
    std::array<float, 32> sums{};
    for (int i = 0; i < 8; ++i) {
        const float* early = v + 128 * i;
        const float* late = early + 96;
        const float* w = &window[64 * i];
        for (int j = 0; j < 32; ++j) {
            sums[j] += early[j] * w[j] + late[j] * w[32 + j];
        }
    }
    // Converted in one contiguous pass (which vectorises), then spread.
    std::array<int16_t, 32> pcm;
    for (int j = 0; j < 32; ++j) {
        pcm[j] = toPcm(sums[j]);
    }
    for (int j = 0; j < 32; ++j) {
        out[j * stride] = pcm[j];
    }
}

}  // namespace tunebox
