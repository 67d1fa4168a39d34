// The LRC reader over arbitrary bytes.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "lyrics/lrc_lyrics.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tunebox::parseLrc(std::string_view(reinterpret_cast<const char*>(data), size));
    return 0;
}
