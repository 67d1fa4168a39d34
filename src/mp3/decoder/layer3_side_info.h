#pragma once
// Layer III side information: where the main data starts and, per granule
// and channel, how its spectrum is coded.

#include <array>
#include <cstdint>

#include "mp3/decoder/bit_reader.h"
#include "mp3/decoder/mpeg_header.h"

namespace tunebox {

inline constexpr int kGranuleLines = 576;

enum class BlockType { Normal = 0, Start = 1, Short = 2, Stop = 3 };

struct GranuleChannelInfo {
    int part23Length = 0;
    int bigValues = 0;
    int globalGain = 0;
    int scalefacCompress = 0;
    bool windowSwitching = false;
    BlockType blockType = BlockType::Normal;
    bool mixedBlock = false;
    std::array<int, 3> tableSelect{};
    std::array<int, 3> subblockGain{};
    // First spectral line of regions 1 and 2 of the big-values part.
    int region1Start = 0;
    int region2Start = 0;
    bool preflag = false;
    int scalefacScale = 0;
    int count1Table = 0;

    bool shortBlocks() const { return blockType == BlockType::Short; }
    bool allShort() const { return shortBlocks() && !mixedBlock; }
};

struct Layer3SideInfo {
    int mainDataBegin = 0;
    // scfsi[channel][group]: the long-block scale factors of that group are
    // shared with granule 0 (MPEG-1 only).
    std::array<std::array<bool, 4>, 2> scfsi{};
    std::array<std::array<GranuleChannelInfo, 2>, 2> granule{};  // [granule][channel]
};

// Reads the side information that follows the header (and CRC). Returns 0
// for reserved or contradictory fields; out-of-range counts are clamped.
int readSideInfo(BitReader& reader, const MpegHeader& header, Layer3SideInfo& info);

}  // namespace tunebox
