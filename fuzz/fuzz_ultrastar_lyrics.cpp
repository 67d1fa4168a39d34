// The UltraStar song reader over arbitrary bytes.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "lyrics/ultrastar_lyrics.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tunebox::parseUltraStar(std::string_view(reinterpret_cast<const char*>(data), size));
    return 0;
}
