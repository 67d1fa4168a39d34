// Cost of the key and tempo stage on native stereo at 44,100 Hz: times real
// time on one core, the share of one core it takes at real time, and the
// delay the stretcher holds back (which the player pads and drops, so the
// output it adds is reported as the read-ahead in milliseconds). The effect
// chain over the same blocks runs beside it as the peer.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "bench_signals.h"
#include "effects/key_tempo_stage.h"

namespace tunebox {
namespace {

constexpr uint32_t kSeconds = 10;
constexpr uint32_t kBlockFrames = kEngineBlockBytes / kNativeFrameBytes;

const std::vector<int16_t>& song() {
    static const std::vector<int16_t> samples =
        bench::noise(std::size_t{kSeconds} * kNativeSampleRate * 2);
    return samples;
}

class SongInput final : public StageInput {
  public:
    uint32_t readFrames(int16_t* into, uint32_t frames, bool& ended) override {
        const std::vector<int16_t>& samples = song();
        const auto left = static_cast<uint32_t>((samples.size() - at_) / 2);
        const uint32_t count = std::min(frames, left);
        std::copy_n(samples.begin() + static_cast<std::ptrdiff_t>(at_), count * 2, into);
        at_ += std::size_t{count} * 2;
        ended = count == left;
        return count;
    }

  private:
    std::size_t at_ = 0;
};

// Speed in times real time, and the share of one core the stage takes while
// playing at real time, its inverse, from the wall time of the loop.
void reportSpeed(benchmark::State& state, std::chrono::steady_clock::duration spent) {
    const double audio = double(kSeconds) * static_cast<double>(state.iterations());
    const double taken = std::chrono::duration<double>(spent).count();
    state.counters["x_realtime"] = audio / taken;
    state.counters["core_pct"] = 100.0 * taken / audio;
}

// Arguments: semitones, tempo percent, formants kept (1) or not.
void StageOverSong(benchmark::State& state) {
    const KeyTempo settings{.semitones = static_cast<int>(state.range(0)),
                            .tempoPercent = static_cast<int>(state.range(1)),
                            .preserveFormants = state.range(2) == 1};
    KeyTempoStage stage(settings, kNativeSampleRate);
    std::vector<int16_t> block(std::size_t{kBlockFrames} * 2);
    uint64_t frames = 0;
    const auto began = std::chrono::steady_clock::now();
    for (auto _ : state) {
        SongInput input;
        stage.start();
        for (;;) {
            const StageOutput output = stage.render(input, block.data(), kBlockFrames);
            frames += output.frames;
            if (output.ended) {
                break;
            }
        }
        benchmark::DoNotOptimize(block.data());
    }
    // Speed per second of the song read, whatever the tempo made of it.
    reportSpeed(state, std::chrono::steady_clock::now() - began);
    state.counters["delay_ms"] = 1000.0 * stage.delayFrames() / kNativeSampleRate;
    state.counters["out_per_in"] =
        double(frames) / (double(state.iterations()) * kSeconds * kNativeSampleRate);
}
BENCHMARK(StageOverSong)
    ->Args({2, 100, 0})
    ->Args({0, 80, 0})
    ->Args({3, 90, 0})
    ->Args({-3, 120, 1})
    ->Unit(benchmark::kMillisecond);

// The peer: the echo and equaliser over the same song in engine blocks.
void ChainOverSong(benchmark::State& state) {
    BandValues bands;
    bands.fill(kFlatBandValue);
    EffectControl ctl = bench::chainControl(bands, true, true);
    std::vector<int16_t> work = song();
    const auto began = std::chrono::steady_clock::now();
    for (auto _ : state) {
        for (std::size_t at = 0; at < work.size(); at += kEngineBlockBytes / 2) {
            const auto bytes = static_cast<uint32_t>(
                std::min<std::size_t>(kEngineBlockBytes, (work.size() - at) * 2));
            benchmark::DoNotOptimize(fltEffectChain(ctl, work.data() + at, bytes));
        }
    }
    reportSpeed(state, std::chrono::steady_clock::now() - began);
}
BENCHMARK(ChainOverSong)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tunebox

BENCHMARK_MAIN();
