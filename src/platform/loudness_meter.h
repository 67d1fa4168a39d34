#pragma once
// Programme loudness after ITU-R BS.1770 / EBU R 128 (libebur128): the
// integrated loudness of everything added, and its true peak (the highest
// level between samples as well as at them, through oversampling).

#include <cstdint>
#include <memory>
#include <span>

namespace tunebox {

struct Loudness {
    // LUFS; minus infinity for silence or a signal too short to gate.
    double integratedLufs = 0.0;
    // dB relative to full scale; minus infinity for silence.
    double truePeakDbtp = 0.0;
};

class LoudnessMeter {
  public:
    // For interleaved 16-bit stereo at `sampleRate`.
    explicit LoudnessMeter(uint32_t sampleRate);
    ~LoudnessMeter();
    LoudnessMeter(const LoudnessMeter&) = delete;
    LoudnessMeter& operator=(const LoudnessMeter&) = delete;

    // False when the meter could not be set up or refused the samples.
    [[nodiscard]] bool add(std::span<const int16_t> samples);

    [[nodiscard]] Loudness measure() const;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace tunebox
