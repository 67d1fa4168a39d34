#pragma once
// What the singer is told about a take that did not stay in time.

#include <cstdint>
#include <string>

namespace tunebox {

// "out of sync from mm:ss", the moment counted from the start of the take.
std::string outOfSyncNote(uint64_t takeBytes);

}  // namespace tunebox
