// The CD+G decoder over arbitrary packets: the whole stream drawn and counted.

#include <cstddef>
#include <cstdint>
#include <span>

#include "lyrics/cdg_screen.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::span<const uint8_t> stream(data, size);
    tunebox::countCdgPackets(stream);
    tunebox::cdgScreenAt(stream, static_cast<double>(size));
    return 0;
}
