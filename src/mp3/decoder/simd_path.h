#pragma once
// Which vector instructions the decoder's inner loops use. Every path gives
// the same samples, bit for bit: each kernel computes its lanes one by one
// in a fixed order of operations (no fused multiply-add, no reordered sums),
// so a wider register only does more lanes at once.

#include <optional>
#include <string_view>

namespace tunebox {

enum class SimdPath {
    kScalar,  // one lane at a time, any processor
    kSse2,    // four lanes (on other processors: the compiler's own vectors)
    kAvx2,    // eight lanes, x86-64 processors that have it
};

// The path in use: the widest this processor has, unless TUNEBOX_SIMD
// (scalar, sse2 or avx2, read once) or forceSimdPath picks another.
SimdPath activeSimdPath();

bool simdPathAvailable(SimdPath path);

// Picks a path for tests and benchmarks; false (and nothing changes) when
// this processor lacks it.
bool forceSimdPath(SimdPath path);

std::optional<SimdPath> simdPathNamed(std::string_view name);
std::string_view simdPathName(SimdPath path);

}  // namespace tunebox
