// Speed of the effect chain on native stereo at 44,100 Hz, in times real
// time on one core. With TUNEBOX_BENCH_PCM naming a raw 16-bit stereo file,
// ChainOnFile runs the whole chain over that file, for comparison with other
// tools working on the same samples (bench/effects_vs_sox.sh).

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

#include "bench_signals.h"

namespace tunebox {
namespace {

constexpr uint32_t kBlockBytes = kEngineBlockBytes;
constexpr BandValues kShapedBands{16, 20, 24, 28, 30, 26, 22, 18, 14, 24};

EffectControl makeControl(bool equaliser, bool reverb) {
    return bench::chainControl(kShapedBands, equaliser, reverb);
}

void setRealTimeCounter(benchmark::State& state, std::size_t bytesPerIteration) {
    const double secondsOfAudio = static_cast<double>(bytesPerIteration) / kNativeBytesPerSecond;
    state.counters["x_realtime"] = benchmark::Counter(
        secondsOfAudio * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

// Processes a copy of `source` block by block, as an engine would.
template <class Process>
void runOverBlocks(benchmark::State& state, const std::vector<int16_t>& source, Process process) {
    std::vector<int16_t> work(source.size());
    const std::size_t bytes = source.size() * sizeof(int16_t);
    for (auto _ : state) {
        state.PauseTiming();
        work = source;
        state.ResumeTiming();
        for (std::size_t offset = 0; offset < bytes; offset += kBlockBytes) {
            const auto length =
                static_cast<uint32_t>(std::min<std::size_t>(kBlockBytes, bytes - offset));
            benchmark::DoNotOptimize(process(work.data() + offset / 2, length));
        }
        benchmark::ClobberMemory();
    }
    setRealTimeCounter(state, bytes);
}

const std::vector<int16_t>& tenSecondsOfNoise() {
    static const std::vector<int16_t> samples = bench::noise(10 * kNativeBytesPerSecond / 2);
    return samples;
}

void EqualizerStageAllBands(benchmark::State& state) {
    EffectControl ctl = makeControl(true, false);
    runOverBlocks(state, tenSecondsOfNoise(), [&ctl](int16_t* block, uint32_t length) {
        return fltEqualizerStage(ctl, block, length);
    });
}
BENCHMARK(EqualizerStageAllBands)->Unit(benchmark::kMillisecond);

void Reverb(benchmark::State& state) {
    EffectControl ctl = makeControl(false, true);
    runOverBlocks(state, tenSecondsOfNoise(), [&ctl](int16_t* block, uint32_t length) {
        return reverb_process(ctl.reverb, block, length, ctl.pLeft.get(), ctl.pRight.get());
    });
}
BENCHMARK(Reverb)->Unit(benchmark::kMillisecond);

void WholeChain(benchmark::State& state) {
    EffectControl ctl = makeControl(true, true);
    runOverBlocks(state, tenSecondsOfNoise(), [&ctl](int16_t* block, uint32_t length) {
        return fltEffectChain(ctl, block, length);
    });
}
BENCHMARK(WholeChain)->Unit(benchmark::kMillisecond);

void ChainOnFile(benchmark::State& state) {
    const char* path = std::getenv("TUNEBOX_BENCH_PCM");
    if (path == nullptr) {
        state.SkipWithError("set TUNEBOX_BENCH_PCM to a raw s16le stereo file");
        return;
    }
    std::ifstream in(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
    std::vector<int16_t> samples(bytes.size() / sizeof(int16_t));
    std::copy(bytes.begin(), bytes.begin() + samples.size() * 2,
              reinterpret_cast<char*>(samples.data()));
    EffectControl ctl = makeControl(true, true);
    runOverBlocks(state, samples, [&ctl](int16_t* block, uint32_t length) {
        return fltEffectChain(ctl, block, length);
    });
}
BENCHMARK(ChainOnFile)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tunebox

BENCHMARK_MAIN();
