// The ID3v1 and ID3v2 tag readers over arbitrary bytes.

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

#include "mp3/id3_tag.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    std::vector<uint8_t> copy(data, data + size);
    std::unique_ptr<std::FILE, decltype(&std::fclose)> stream(
        fmemopen(copy.data(), copy.size(), "rb"), &std::fclose);
    if (!stream) {
        return 0;
    }
    tunebox::Id3Tag tag;
    uint32_t total = 0;
    tunebox::mp3GetId3v2(tag, total, stream.get());
    std::array<uint8_t, tunebox::kId3v1Bytes> block{};
    tunebox::mp3GetId3v1(block, stream.get());
    return 0;
}
