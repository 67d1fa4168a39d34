// Speed of the accompaniment converter: a 5-minute 128 kbit/s MP3 and a
// 5-minute 48 kHz WAV read as native PCM the way the player reads them, in
// times real time, beside libmpg123 decoding the same MP3 file alone.
// bench/converter_speed.sh prints the ratio of the MP3 path to libmpg123.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "../tests/support/mpg123_reference.h"
#include "core/wave_format.h"
#include "playback/source_opener.h"

namespace {

constexpr double kSeconds = 300.0;

struct Material {
    std::string mp3;
    std::string wav48k;
    bool ready = false;
};

const Material& material() {
    static const Material made = [] {
        const auto dir = std::filesystem::temp_directory_path() / "tunebox-converter-bench";
        std::filesystem::create_directories(dir);
        Material m{(dir / "song.mp3").string(), (dir / "song48k.wav").string(), false};
        const std::string source = (dir / "song.wav").string();
        const std::string seconds = std::to_string(static_cast<int>(kSeconds));
        const std::string make =
            "sox -n -r 44100 -c 2 -b 16 " + source + " synth " + seconds +
            " sine 110-880 pinknoise vol 0.4 >/dev/null 2>&1 && lame --quiet -b 128 " + source +
            " " + m.mp3 + " && sox -n -r 48000 -c 2 -b 16 " + m.wav48k + " synth " + seconds +
            " sine 220-660 pinknoise vol 0.4 >/dev/null 2>&1";
        m.ready = (std::filesystem::exists(m.mp3) && std::filesystem::exists(m.wav48k)) ||
                  std::system(make.c_str()) == 0;
        return m;
    }();
    return made;
}

// Reads the whole file through the converter in the player's blocks.
uint64_t readAsPlayer(const std::string& path, uint32_t preferBuiltin) {
    const auto source = tunebox::wavOpenSource(path, {preferBuiltin == 1}).source;
    uint64_t total = 0;
    if (source) {
        std::vector<uint8_t> block(tunebox::kEngineBlockBytes);
        for (tunebox::SourceBlock read; !read.ended && !read.failed;) {
            read = source->read(block.data(), tunebox::kEngineBlockBytes);
            total += read.count;
        }
    }
    return total;
}

void reportRealTime(benchmark::State& state) {
    state.counters["x_realtime"] = benchmark::Counter(
        kSeconds * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void ConverterMp3SystemCodec(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(readAsPlayer(material().mp3, 0));
    }
    reportRealTime(state);
}

void ConverterMp3BuiltinDecoder(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(readAsPlayer(material().mp3, 1));
    }
    reportRealTime(state);
}

void Libmpg123Alone(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(tunebox::test::decodeFileWithMpg123(material().mp3).size());
    }
    reportRealTime(state);
}

void ConverterWav48k(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(readAsPlayer(material().wav48k, 0));
    }
    reportRealTime(state);
}

}  // namespace

BENCHMARK(ConverterMp3SystemCodec)->Unit(benchmark::kMillisecond);
BENCHMARK(Libmpg123Alone)->Unit(benchmark::kMillisecond);
BENCHMARK(ConverterMp3BuiltinDecoder)->Unit(benchmark::kMillisecond);
BENCHMARK(ConverterWav48k)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    if (!material().ready) {
        std::fprintf(stderr, "converter_bench: sox or lame could not make the test material\n");
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
