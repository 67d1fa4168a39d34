#pragma once
// Zero-filled blocks from the process heap. Every engine buffer comes from
// here, allocated before audio flows, so a failure is reported (nullptr)
// instead of thrown, and tests can make the n-th allocation fail.

#include <cstddef>
#include <memory>
#include <new>

namespace tunebox {

// Test hook: the allocation after `succeeding` more successes fails; a
// negative value (the default) means no allocation is made to fail.
void heapFailAfter(long succeeding);

// True when the hook says the current allocation must fail.
bool heapShouldFail();

template <class T>
std::unique_ptr<T[]> heapAllocZeroed(std::size_t count) {
    if (heapShouldFail()) {
        return nullptr;
    }
    return std::unique_ptr<T[]>(new (std::nothrow) T[count]());
}

}  // namespace tunebox
