#include "mp3/decoder/simd_path.h"

#include <array>
#include <atomic>
#include <cstdlib>

namespace tunebox {
namespace {

constexpr std::array<std::string_view, 3> kNames{"scalar", "sse2", "avx2"};

SimdPath widestAvailable() {
    return simdPathAvailable(SimdPath::kAvx2) ? SimdPath::kAvx2 : SimdPath::kSse2;
}

SimdPath initialPath() {
    const char* requested = std::getenv("TUNEBOX_SIMD");
    if (requested != nullptr) {
        const auto path = simdPathNamed(requested);
        if (path && simdPathAvailable(*path)) {
            return *path;
        }
    }
    return widestAvailable();
}

std::atomic<SimdPath>& currentPath() {
    static std::atomic<SimdPath> path{initialPath()};
    return path;
}

}  // namespace

SimdPath activeSimdPath() {
    return currentPath().load(std::memory_order_relaxed);
}

bool simdPathAvailable(SimdPath path) {
    if (path != SimdPath::kAvx2) {
        return true;
    }
#if defined(__x86_64__) || defined(__i386__)
    return __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

bool forceSimdPath(SimdPath path) {
    if (!simdPathAvailable(path)) {
        return false;
    }
    currentPath().store(path, std::memory_order_relaxed);
    return true;
}

std::optional<SimdPath> simdPathNamed(std::string_view name) {
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        if (name == kNames[i]) {
            return static_cast<SimdPath>(i);
        }
    }
    return std::nullopt;
}

std::string_view simdPathName(SimdPath path) {
    return kNames[static_cast<std::size_t>(path)];
}

}  // namespace tunebox
