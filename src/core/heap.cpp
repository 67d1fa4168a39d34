#include "core/heap.h"

#include <atomic>

namespace tunebox {
namespace {
std::atomic<long> remainingSuccesses{-1};
}  // namespace

void heapFailAfter(long succeeding) {
    remainingSuccesses = succeeding;
}

bool heapShouldFail() {
    long remaining = remainingSuccesses.load();
    while (remaining >= 0) {
        if (remainingSuccesses.compare_exchange_weak(remaining, remaining - 1)) {
            return remaining == 0;
        }
    }
    return false;
}

}  // namespace tunebox
