#include "mp3/polyphase_synthesis.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "mp3/synthesis_window.h"

namespace tunebox {
namespace {

struct SynthesisTables {
    std::array<std::array<float, 32>, 64> matrix{};
    std::array<float, 512> window{};
};

const SynthesisTables& tables() {
    static const SynthesisTables built = [] {
        SynthesisTables t;
        for (int i = 0; i < 64; ++i) {
            for (int k = 0; k < 32; ++k) {
                t.matrix[i][k] =
                    static_cast<float>(std::cos((16 + i) * (2 * k + 1) * std::numbers::pi / 64.0));
            }
        }
        const auto& d = synthesisWindow();
        for (int i = 0; i < 512; ++i) {
            t.window[i] = static_cast<float>(d[i] * 32768.0);
        }
        return t;
    }();
    return built;
}

// Clipping is symmetric, as in the reference decoder of the compliance
// streams: a full-scale negative peak comes out as -32767.
int16_t toPcm(float value) {
    const float rounded = std::nearbyint(value);
    return static_cast<int16_t>(std::clamp(rounded, -32767.0f, 32767.0f));
}

}  // namespace

void PolyphaseSynthesis::reset() {
    v_ = {};
    offset_ = 0;
}

void PolyphaseSynthesis::synthesize(const float* subbands, int16_t* out, int stride) {
    const SynthesisTables& t = tables();
    offset_ = (offset_ - 64) & 1023;
    for (int i = 0; i < 64; ++i) {
        float sum = 0.0f;
        for (int k = 0; k < 32; ++k) {
            sum += t.matrix[i][k] * subbands[k];
        }
        v_[offset_ + i] = sum;
    }
    for (int j = 0; j < 32; ++j) {
        float sum = 0.0f;
        for (int i = 0; i < 8; ++i) {
            sum += v_[(offset_ + 128 * i + j) & 1023] * t.window[64 * i + j];
            sum += v_[(offset_ + 128 * i + 96 + j) & 1023] * t.window[64 * i + 32 + j];
        }
        out[j * stride] = toPcm(sum);
    }
}

}  // namespace tunebox
