#pragma once
// CD+G streams built packet by packet, for the tests that draw them.

#include <cstdint>
#include <vector>

namespace tunebox::test {

using CdgStream = std::vector<uint8_t>;

// One graphics packet; the unused symbols carry the high bits other subcode
// channels set, which must not matter.
inline void addPacket(CdgStream& stream, int instruction, std::vector<uint8_t> data,
                      uint8_t command = 0x09) {
    data.resize(16);
    stream.push_back(static_cast<uint8_t>(command | 0xC0));
    stream.push_back(static_cast<uint8_t>(instruction | 0xC0));
    stream.insert(stream.end(), {0xC0, 0xC0});
    for (const uint8_t symbol : data) {
        stream.push_back(static_cast<uint8_t>(symbol | 0xC0));
    }
    stream.insert(stream.end(), {0xC0, 0xC0, 0xC0, 0xC0});
}

// A tile whose rows alternate between two patterns.
inline void addTile(CdgStream& stream, bool exclusiveOr, int colour0, int colour1, int row,
                    int column, uint8_t evenRows, uint8_t oddRows) {
    std::vector<uint8_t> data = {static_cast<uint8_t>(colour0), static_cast<uint8_t>(colour1),
                                 static_cast<uint8_t>(row), static_cast<uint8_t>(column)};
    for (int y = 0; y < 12; ++y) {
        data.push_back(y % 2 == 0 ? evenRows : oddRows);
    }
    addPacket(stream, exclusiveOr ? 38 : 6, data);
}

}  // namespace tunebox::test
