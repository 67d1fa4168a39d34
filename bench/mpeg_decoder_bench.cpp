// Decoding speed of the built-in Layer III decoder against libmpg123 on the
// same streams, one core, both to 16-bit PCM. Prints each decoder's speed as
// times real time per CPU second and the ratio built-in / libmpg123, then
// the built-in decoder's speed at half and quarter rate against full rate.
// The ratio is given for each vector path this processor has; the
// benchmarks above run the path TUNEBOX_SIMD names, else the widest.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "../tests/support/mpg123_reference.h"
#include "mp3/decoder/mpeg_audio_decoder.h"
#include "mp3/decoder/simd_path.h"

namespace {

struct BenchStream {
    std::string name;
    std::vector<uint8_t> bytes;
    double seconds = 0.0;  // audio duration
};

// 20-second lame streams made on the spot from a synthesised signal.
BenchStream makeStream(const std::string& name, int rate, const std::string& lameOptions) {
    const std::filesystem::path dir = std::filesystem::temp_directory_path() / "tunebox-mpeg-bench";
    std::filesystem::create_directories(dir);
    const std::string wav = (dir / (name + ".wav")).string();
    const std::string mp3 = (dir / (name + ".mp3")).string();
    const std::string make = "sox -n -r " + std::to_string(rate) + " -c 2 -b 16 " + wav +
                             " synth 20 sine 60-9000 pinknoise vol 0.4 >/dev/null 2>&1 && "
                             "lame --quiet -t " +
                             lameOptions + " " + wav + " " + mp3 + " >/dev/null 2>&1";
    BenchStream stream{name, {}, 0.0};
    if (std::system(make.c_str()) != 0) {
        return stream;
    }
    std::ifstream in(mp3, std::ios::binary);
    stream.bytes.assign(std::istreambuf_iterator<char>(in), {});
    tunebox::MpegAudioDecoder decoder;
    std::vector<int16_t> pcm;
    decoder.decodeStream(stream.bytes, pcm);
    const auto output = tunebox::describeOutput(decoder.lastHeader());
    if (!pcm.empty()) {
        stream.seconds = double(pcm.size()) / output.channels / output.sampleRate;
    }
    return stream;
}

std::vector<BenchStream> loadStreams() {
    std::vector<BenchStream> streams;
    for (BenchStream stream : {makeStream("mpeg1_44k_joint_128", 44100, "-m j -b 128"),
                               makeStream("mpeg1_44k_vbr_V2", 44100, "-V 2"),
                               makeStream("mpeg2_22k_joint_64", 22050, "-m j -b 64")}) {
        if (stream.seconds > 0.0) {
            streams.push_back(std::move(stream));
        }
    }
    return streams;
}

const std::vector<BenchStream>& streams() {
    static const std::vector<BenchStream> loaded = loadStreams();
    return loaded;
}

// Seconds of audio per second of decoding: times real time.
void report(benchmark::State& state, const BenchStream& stream) {
    state.counters["x_realtime"] = benchmark::Counter(stream.seconds * double(state.iterations()),
                                                      benchmark::Counter::kIsRate);
}

// One whole decode by the built-in decoder at the given rate reduction.
void decodeBuiltIn(const BenchStream& stream, int reduction, std::vector<int16_t>& pcm) {
    tunebox::MpegAudioDecoder decoder;
    decoder.configure({.reduction = reduction});
    pcm.clear();
    decoder.decodeStream(stream.bytes, pcm);
}

void builtIn(benchmark::State& state, const BenchStream& stream, int reduction) {
    std::vector<int16_t> pcm;
    pcm.reserve(1 << 24);
    for (auto _ : state) {
        decodeBuiltIn(stream, reduction, pcm);
        benchmark::DoNotOptimize(pcm.data());
    }
    report(state, stream);
}

void libmpg123(benchmark::State& state, const BenchStream& stream) {
    for (auto _ : state) {
        const auto output = tunebox::test::decodeWithMpg123(stream.bytes);
        benchmark::DoNotOptimize(output.samples.data());
    }
    report(state, stream);
}

// Times real time of one decoder over about two seconds of its own CPU
// time (the machine may be busy with other work), measured here so that the
// ratio can be printed.
// A reduction of -1 times libmpg123.
double timesRealTime(const BenchStream& stream, int reduction) {
    const std::clock_t start = std::clock();
    int runs = 0;
    std::vector<int16_t> pcm;
    do {
        if (reduction >= 0) {
            decodeBuiltIn(stream, reduction, pcm);
        } else {
            benchmark::DoNotOptimize(tunebox::test::decodeWithMpg123(stream.bytes).samples.data());
        }
        ++runs;
    } while (std::clock() - start < 2 * CLOCKS_PER_SEC);
    const double elapsed = double(std::clock() - start) / CLOCKS_PER_SEC;
    return stream.seconds * runs / elapsed;
}

}  // namespace

int main(int argc, char** argv) {
    for (const BenchStream& stream : streams()) {
        for (int reduction = 0; reduction <= 2; ++reduction) {
            benchmark::RegisterBenchmark(
                ("builtin/" + stream.name + "/reduction" + std::to_string(reduction)).c_str(),
                builtIn, stream, reduction);
        }
        benchmark::RegisterBenchmark(("libmpg123/" + stream.name).c_str(), libmpg123, stream);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    const tunebox::SimdPath chosen = tunebox::activeSimdPath();
    for (const BenchStream& stream : streams()) {
        for (const auto path :
             {tunebox::SimdPath::kScalar, tunebox::SimdPath::kSse2, tunebox::SimdPath::kAvx2}) {
            if (tunebox::forceSimdPath(path)) {
                // The peer again beside each path, as the machine's load
                // may change in between.
                const double peer = timesRealTime(stream, -1);
                const double own = timesRealTime(stream, 0);
                std::printf("%-20s %-6s built-in %7.1fx real time, libmpg123 %7.1fx, ratio %.2f\n",
                            stream.name.c_str(), tunebox::simdPathName(path).data(), own, peer,
                            own / peer);
            }
        }
        tunebox::forceSimdPath(chosen);
        const double own = timesRealTime(stream, 0);
        const double half = timesRealTime(stream, 1);
        const double quarter = timesRealTime(stream, 2);
        std::printf("%-20s half rate %.2fx, quarter rate %.2fx the speed of full rate\n",
                    stream.name.c_str(), half / own, quarter / own);
    }
    return 0;
}
