// What keeping a take's header up to date costs the process, as CPU per
// second of audio: one engine block after another is appended to a file in
// the temporary folder, with the header refreshed (and the data pushed to the
// disk by the flusher's thread, whose time counts too) and without.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>
#include <vector>

#include "core/wave_format.h"
#include "playback/wav_writer.h"

namespace tunebox {
namespace {

constexpr uint32_t kBlocksPerTake = 60;  // about half a minute

void writeTakes(benchmark::State& state, uint32_t refreshBytes) {
    const std::string path =
        (std::filesystem::temp_directory_path() / "tunebox-writer-bench.wav").string();
    const std::vector<uint8_t> block(kEngineBlockBytes, 0x5A);
    for (auto _ : state) {
        WaveWriter writer;
        wavResetWriter(writer);
        writer.refreshBytes = refreshBytes;
        if (wavCreateFile(path, writer) != 1) {
            state.SkipWithError("cannot create the file");
            break;
        }
        for (uint32_t i = 0; i < kBlocksPerTake; ++i) {
            wavWrite(writer, block.data(), kEngineBlockBytes);
        }
        wavCloseFile(writer);
    }
    std::filesystem::remove(path);
    const double audioSeconds = double(kBlocksPerTake) * kEngineBlockBytes / kNativeBytesPerSecond;
    // Seconds of audio written per second of the process's CPU time.
    state.counters["x_cpu"] =
        benchmark::Counter(audioSeconds * double(state.iterations()), benchmark::Counter::kIsRate);
}

void WithHeaderRefresh(benchmark::State& state) {
    writeTakes(state, kHeaderRefreshBytes);
}
void WithoutHeaderRefresh(benchmark::State& state) {
    writeTakes(state, 0);
}

BENCHMARK(WithHeaderRefresh)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(WithoutHeaderRefresh)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tunebox

BENCHMARK_MAIN();
